#pragma once

#include <string>

#include "Accounts.h"

namespace emulator {

/// The signed-in user's record of Bitbucket Cloud as JSON text.
std::string bitbucketUserRecord(const Account& account);
/// A repository's record as JSON text. The https clone address carries the viewer's name.
std::string bitbucketRepositoryRecord(const Repository& repository, const Account* viewer);

}  // namespace emulator
