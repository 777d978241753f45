#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "ConfigurationReader.h"

namespace emulator {

namespace {

constexpr std::size_t mostRepositories = 100'000;

constexpr std::array<std::pair<std::string_view, Restriction>, 7> restrictions{{
    {"none", Restriction::None},
    {"rate-limited", Restriction::RateLimited},
    {"rate-limited-429", Restriction::RateLimitedAs429},
    {"secondary-limited", Restriction::SecondaryLimited},
    {"single-sign-on", Restriction::SingleSignOn},
    {"partial-single-sign-on", Restriction::PartialSingleSignOn},
    {"no-last-link", Restriction::OmitsLastLink},
}};

Restriction restrictionNamed(const std::string& name) {
    std::string known;
    for (const auto& [candidate, restriction] : restrictions) {
        if (candidate == name) return restriction;
        known += known.empty() ? "" : ", ";
        known += candidate;
    }
    throw ConfigurationError("there is no restriction \"" + name + "\", but " + known);
}

/// Logins and names stand in paths as they are.
void requireName(const std::string& name, const char* kind) {
    constexpr std::string_view allowed =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
    if (name.empty() || name.find_first_not_of(allowed) != std::string::npos) {
        throw ConfigurationError("\"" + name + "\" is no " + kind +
                                 ": letters, digits, \"-\", \"_\" and \".\" make one");
    }
}

Visibility visibilityNamed(const std::string& name) {
    for (const auto visibility : {Visibility::Public, Visibility::Private, Visibility::Internal}) {
        if (visibilityName(visibility) == name) return visibility;
    }
    throw ConfigurationError("there is no visibility \"" + name +
                             "\", but public, private, internal");
}

/// Numbers and dates are generated ones; all that a person would look for is as given.
void describeRepository(const JSONReader& given, const Owner& owner, Repository& repository) {
    repository.name = given.text("name");
    given.at("name", [&] { requireName(repository.name, "repository's name"); });
    repository.owner = owner;
    repository.description = given.optionalText("description");
    repository.defaultBranch = given.optionalText("defaultBranch").value_or("main");
    repository.visibility = Visibility::Public;
    if (const auto name = given.optionalText("visibility")) {
        given.at("visibility", [&] { repository.visibility = visibilityNamed(*name); });
    }
    repository.isArchived = given.flag("archived", false);
    repository.isFork = given.flag("fork", false);
    given.requireNoOthers();
}

std::vector<Repository> readRepositories(const JSONReader& given, const Owner& owner) {
    const auto list = given.elements("repositories");
    if (list.size() > mostRepositories) throw ConfigurationError("too many repositories");
    auto repositories = generateRepositories(owner, list.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        list[i].check([&] { describeRepository(list[i], owner, repositories[i]); });
    }
    return repositories;
}

}  // namespace

std::string_view restrictionName(Restriction restriction) {
    return std::ranges::find(restrictions, restriction,
                             [](const auto& entry) { return entry.second; })
        ->first;
}

Account parseAccount(const std::string& text) {
    const auto first = text.find(':');
    const auto second = first == std::string::npos ? first : text.find(':', first + 1);
    const std::string login = text.substr(0, first);
    requireName(login, "login");
    std::size_t count = 0;
    if (first != std::string::npos) {
        const auto digits = text.substr(
            first + 1, second == std::string::npos ? std::string::npos : second - first - 1);
        const auto* const end = digits.data() + digits.size();
        const auto [stop, failure] = std::from_chars(digits.data(), end, count);
        if (failure != std::errc() || stop != end || count > mostRepositories) {
            throw ConfigurationError("\"" + digits + "\" is no number of repositories up to " +
                                     std::to_string(mostRepositories));
        }
    }
    const auto restriction =
        second == std::string::npos ? Restriction::None : restrictionNamed(text.substr(second + 1));
    return generateAccount(login, "demo-token-" + login, count, restriction);
}

Account readAccount(const JSONReader& given) {
    const auto login = given.text("login");
    given.at("login", [&] { requireName(login, "login"); });
    auto restriction = Restriction::None;
    if (const auto name = given.optionalText("restriction")) {
        given.at("restriction", [&] { restriction = restrictionNamed(*name); });
    }
    const bool listed = given.isList("repositories");
    const auto count = listed ? 0 : given.number("repositories", 0, mostRepositories);
    auto account =
        generateAccount(login, given.optionalText("token").value_or("demo-token-" + login),
                        static_cast<std::size_t>(count), restriction);
    if (listed) account.repositories = readRepositories(given, account.asOwner());
    if (const auto password = given.optionalText("password")) account.password = *password;
    given.requireNoOthers();
    return account;
}

void useAccounts(std::vector<Account> accounts, Configuration& configuration) {
    Accounts known;
    if (!accounts.empty()) addFaultTokens(accounts.front());
    for (auto& account : accounts) {
        if (known.withLogin(account.login) != nullptr) {
            throw ConfigurationError("there are two accounts \"" + account.login + "\"");
        }
        known.add(std::move(account));
    }
    configuration.server.accounts = std::move(known);
}

}  // namespace emulator
