#include "Accounts.h"

#include <algorithm>

#include "Faults.h"

namespace emulator {

std::string_view visibilityName(Visibility visibility) {
    switch (visibility) {
        case Visibility::Public:
            return "public";
        case Visibility::Private:
            return "private";
        case Visibility::Internal:
            return "internal";
    }
    return "private";
}

void addFaultTokens(Account& account) {
    for (const auto& fault : faults::names()) {
        account.tokens.push_back({.value = faults::tokenPrefix + fault});
    }
}

Accounts& Accounts::add(Account account) {
    accounts_.push_back(std::move(account));
    return *this;
}

const Account* Accounts::withLogin(std::string_view login) const {
    const auto found = std::ranges::find(accounts_, login, &Account::login);
    return found == accounts_.end() ? nullptr : &*found;
}

Accounts::Holder Accounts::withToken(std::string_view token, std::int64_t now) const {
    const auto unlessExpired = [now](const Account& account, const Token& found) {
        const bool expired = found.expires && *found.expires <= now;
        return expired ? Holder{} : Holder{&account, &found};
    };
    for (const auto& account : accounts_) {
        for (const auto& candidate : account.tokens) {
            if (candidate.value == token) {
                return unlessExpired(account, candidate);
            }
        }
    }
    const auto [login, issued] = issued_.find(token);
    const auto* owner = issued != nullptr ? withLogin(login) : nullptr;
    return owner != nullptr ? unlessExpired(*owner, *issued) : Holder{};
}

void Accounts::issue(std::string login, Token token) const {
    issued_.add(std::move(login), std::move(token));
}

Accounts Accounts::demo() {
    static const Accounts accounts = makeDemo();
    return accounts;
}

Accounts Accounts::makeDemo() {
    Accounts accounts;
    const auto add = [&](const std::string& login, std::size_t count, Restriction restriction) {
        accounts.add(generateAccount(login, "demo-token-" + login, count, restriction));
    };
    add("octavia", 137, Restriction::None);
    addFaultTokens(accounts.accounts_.front());
    add("marlow", 3, Restriction::None);
    add("archive", 4200, Restriction::None);
    add("bare", 0, Restriction::None);
    add("limited", 25, Restriction::RateLimited);
    add("limited429", 25, Restriction::RateLimitedAs429);
    add("hasty", 25, Restriction::SecondaryLimited);
    add("sso", 25, Restriction::SingleSignOn);
    add("partial", 25, Restriction::PartialSingleSignOn);
    add("uncounted", 125, Restriction::OmitsLastLink);
    return accounts;
}

}  // namespace emulator
