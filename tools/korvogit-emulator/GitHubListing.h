#pragma once

#include <string>
#include <vector>

#include "Accounts.h"
#include "Message.h"

namespace emulator {

/// What a listing's filters and order select, or why they are refused.
struct GitHubSelection {
    std::vector<const Repository*> repositories;
    std::string refusal;   ///< the JSON body of a 422; empty when nothing is refused
    bool leftOut = false;  ///< an organization's repositories were left out (single sign-on)
};

/// Applies visibility, affiliation, type, since, before, sort and direction of the request, and
/// what the token's scopes and the account's restriction take away.
GitHubSelection selectGitHubRepositories(const Request& request, const Accounts::Holder& holder);

}  // namespace emulator
