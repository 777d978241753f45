#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "IssuedTokens.h"

namespace emulator {

/// Who owns repositories: a person or an organization (a group, a workspace, a project).
struct Owner {
    std::string login{};
    std::int64_t id = 0;
    bool isOrganization = false;
};

enum class Visibility { Public, Private, Internal };
std::string_view visibilityName(Visibility visibility);

/// What the services know of a repository, in no service's words. Dates in seconds since 1970.
struct Repository {
    std::int64_t id = 0;
    std::string name{};  ///< letters, digits, "-", "_", ".": may stand in a path as it is
    Owner owner{};
    std::optional<std::string> description{};
    std::optional<std::string> homepage{};
    std::optional<std::string> language{};
    std::optional<std::string> license{};  ///< an SPDX identifier
    std::vector<std::string> topics{};
    std::string defaultBranch = "main";
    Visibility visibility = Visibility::Public;
    bool isFork = false;
    bool isArchived = false;
    std::int64_t created = 0;
    std::int64_t updated = 0;
    std::int64_t pushed = 0;
    std::int64_t stars = 0;
    std::int64_t forks = 0;
    std::int64_t openIssues = 0;
    std::int64_t sizeInKilobytes = 0;

    std::string fullName() const { return owner.login + "/" + name; }
    bool operator==(const Repository& other) const { return id == other.id; }
};

/// What a service does to all requests of an account, right as they may be.
enum class Restriction {
    None,
    RateLimited,          ///< the hourly limit is used up (403)
    RateLimitedAs429,     ///< the same with the status that newer answers have
    SecondaryLimited,     ///< too many at once: 403 with "retry-after"
    SingleSignOn,         ///< an organization demands single sign-on: 403
    PartialSingleSignOn,  ///< lists succeed, but without the organizations' repositories
    OmitsLastLink,        ///< lists are too long for the service to count: no "last" link
};

/// A person at every service at once, with the repositories that this person can list.
struct Account {
    std::string login{};
    std::int64_t id = 0;
    std::string displayName{};
    std::string email{};
    std::string password{};  ///< for the services that take one
    std::vector<Token> tokens{};
    Restriction restriction = Restriction::None;
    std::int64_t created = 1'400'000'000;
    std::vector<Repository> repositories{};

    Owner asOwner() const { return {login, id, false}; }
};

/// Makes so many repositories, always the same for the same login, count and seed: some of the
/// account's own, some of three organizations; private, public, internal, forked, archived ones;
/// with and without description, home page, language, topics; descriptions in several scripts.
std::vector<Repository> generateRepositories(const Owner& owner, std::size_t count,
                                             std::uint64_t seed = 1);

/// An account with generated repositories and one token of the usual scopes.
Account generateAccount(std::string login, std::string token, std::size_t repositories,
                        Restriction restriction = Restriction::None);

/// Makes "fault-NAME" a token of the account for each of `faults::names()`: whoever uses one gets
/// answers with that fault.
void addFaultTokens(Account& account);

/// The accounts that a server knows. It does not change while a server uses it, but for tokens that
/// are issued.
class Accounts {
public:
    Accounts& add(Account account);

    const std::vector<Account>& all() const { return accounts_; }
    /// Nothing when there is none.
    const Account* withLogin(std::string_view login) const;
    /// The account that the token belongs to, and the token; nothing for a wrong one. A token that
    /// has expired at `now` is a wrong one.
    struct Holder {
        const Account* account = nullptr;
        const Token* token = nullptr;
        explicit operator bool() const { return account != nullptr; }
    };
    Holder withToken(std::string_view token, std::int64_t now) const;
    /// Makes the token one of that account's. Copies of the accounts do not have it.
    void issue(std::string login, Token token) const;

    /// octavia with 137 repositories, marlow with 3, archive with 4,200, bare with none; and one
    /// with 25 for each restriction. The token of LOGIN is "demo-token-LOGIN", the password
    /// "demo-password-LOGIN". Octavia's tokens "fault-NAME" bring on the fault of that name.
    static Accounts demo();

private:
    static Accounts makeDemo();
    std::vector<Account> accounts_;
    mutable IssuedTokens issued_;
};

}  // namespace emulator
