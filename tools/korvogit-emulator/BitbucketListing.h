#pragma once

#include <string>
#include <vector>

#include "Accounts.h"
#include "Message.h"

namespace emulator {

/// What a listing's filters and order select, or why they are refused.
struct BitbucketSelection {
    std::vector<const Repository*> repositories{};
    std::string refusal{};  ///< for people; empty when nothing is refused
};

/// Applies role, q and sort to the repositories in `workspace` (empty: in all of them). `q` may
/// hold the clauses `scm = "…"` and `is_private = true` or `false`, joined with AND. With a role
/// these are the viewer's repositories, without one everybody's public ones too; `viewer` is null
/// for an anonymous request.
BitbucketSelection selectBitbucketRepositories(const Request& request, const Accounts& accounts,
                                               const Account* viewer, const std::string& workspace);

}  // namespace emulator
