#pragma once

#include <string>
#include <vector>

#include "Accounts.h"
#include "GitLabRecords.h"
#include "Message.h"

namespace emulator {

/// What a listing's filters and order select, or why they are refused.
struct GitLabSelection {
    std::vector<const Repository*> repositories{};
    ProjectDetail detail = ProjectDetail::Full;
    std::string refusal{};  ///< the name of the parameter whose value is wrong
};

/// Applies archived, visibility, min_access_level, membership, owned, simple, search, order_by and
/// sort.
/// Without one of the three that ask for the user's own projects, everybody's public ones are
/// selected too. `viewer` is null for a request without token. `strict`: takes the documented
/// values of order_by only.
GitLabSelection selectGitLabProjects(const Request& request, const Accounts& accounts,
                                     const Account* viewer, bool strict);

}  // namespace emulator
