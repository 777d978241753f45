#include "BitbucketListing.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <sstream>

#include "Sorting.h"

namespace emulator {

namespace {

using Filter = std::function<bool(const Repository&)>;

std::vector<std::string> words(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> result;
    for (std::string word; stream >> word;) {
        result.push_back(word);
    }
    return result;
}

/// A clause is a field, an operator and a value; nothing for one that is not known.
std::optional<Filter> clause(const std::string& field, const std::string& comparison,
                             const std::string& value) {
    const bool wanted = comparison == "=";
    if (!wanted && comparison != "!=") {
        return std::nullopt;
    }
    if (field == "scm" && value.size() > 1 && value.front() == '"' && value.back() == '"') {
        const bool isGit = value == "\"git\"";
        return [=](const Repository&) { return isGit == wanted; };
    }
    if (field == "is_private" && (value == "true" || value == "false")) {
        const bool isPrivate = (value == "true") == wanted;
        return
            [=](const Repository& r) { return (r.visibility != Visibility::Public) == isPrivate; };
    }
    return std::nullopt;
}

/// Every clause has three words, and "AND" stands between two.
std::optional<std::vector<Filter>> parseFilter(const std::string& text) {
    const auto parts = words(text);
    std::vector<Filter> filters;
    for (std::size_t i = 0; i < parts.size() || i == 0; i += 4) {
        const bool joined = i == 0 || lowered(parts[i - 1]) == "and";
        if (!joined || i + 3 > parts.size()) {
            return std::nullopt;
        }
        auto filter = clause(parts[i], parts[i + 1], parts[i + 2]);
        if (!filter) {
            return std::nullopt;
        }
        filters.push_back(std::move(*filter));
    }
    return parts.size() % 4 == 3 ? std::optional(std::move(filters)) : std::nullopt;
}

std::optional<Filter> roleFilter(const std::string& role) {
    if (role == "owner" || role == "admin") {
        return [](const Repository& r) { return !r.owner.isOrganization; };
    }
    if (role == "member" || role == "contributor") {
        return [](const Repository&) { return true; };
    }
    return std::nullopt;
}

/// False for a field that cannot be sorted by.
bool sort(std::vector<const Repository*>& repositories, std::string field) {
    const bool ascending = !field.starts_with('-');
    field.erase(0, ascending ? 0 : 1);
    if (field == "name" || field == "full_name") {
        const bool qualified = field == "full_name";
        sortBy(repositories, ascending,
               [&](const Repository& r) { return lowered(qualified ? r.fullName() : r.name); });
        return true;
    }
    if (field != "created_on" && field != "updated_on") {
        return false;
    }
    auto Repository::* const date =
        field == "created_on" ? &Repository::created : &Repository::updated;
    sortBy(repositories, ascending, [&](const Repository& r) { return r.*date; });
    return true;
}

}  // namespace

BitbucketSelection selectBitbucketRepositories(const Request& request, const Accounts& accounts,
                                               const Account* viewer,
                                               const std::string& workspace) {
    const auto role = request.queryValue("role");
    const auto q = request.queryValue("q");
    auto filters = q ? parseFilter(*q) : std::vector<Filter>();
    if (!filters) {
        return {.refusal = "Invalid query: " + *q};
    }
    if (role) {
        auto filter = roleFilter(*role);
        if (!filter) {
            return {.refusal = "Invalid role: " + *role};
        }
        filters->push_back(std::move(*filter));
    }
    BitbucketSelection selection;
    for (const auto& account : accounts.all()) {
        for (const auto& repository : account.repositories) {
            const bool visible =
                &account == viewer || (!role && repository.visibility == Visibility::Public);
            if (visible && (workspace.empty() || repository.owner.login == workspace) &&
                std::ranges::all_of(*filters, [&](const auto& f) { return f(repository); })) {
                selection.repositories.push_back(&repository);
            }
        }
    }
    const auto field = request.queryValue("sort").value_or("created_on");
    if (!sort(selection.repositories, field)) {
        return {.refusal = "Invalid field name: " + field};
    }
    return selection;
}

}  // namespace emulator
