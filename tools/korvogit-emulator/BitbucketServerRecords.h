#pragma once

#include <string>

#include "Accounts.h"

namespace emulator {

/// A user's record of Bitbucket Server as JSON text. `web` is the server's address, "https://HOST".
std::string bitbucketServerUserRecord(const std::string& web, const Account& account);
/// A repository's record as JSON text. `host` is the server's name without port, for ssh addresses.
std::string bitbucketServerRepositoryRecord(const std::string& web, const std::string& host,
                                            const Repository& repository);

}  // namespace emulator
