#pragma once

#include <string>

#include "Accounts.h"

namespace emulator {

/// The addresses that GitHub's records are full of.
struct GitHubAddresses {
    std::string api;      ///< "https://api.github.com", "https://HOST/api/v3"
    std::string web;      ///< "https://github.com", "https://HOST"
    std::string host;     ///< the web host without port, for ssh and git addresses
    std::string avatars;  ///< where pictures lie
};

/// The signed-in user's record as JSON text.
std::string gitHubUserRecord(const GitHubAddresses& addresses, const Account& account);
/// A repository's record as JSON text, as `viewer` sees it.
std::string gitHubRepositoryRecord(const GitHubAddresses& addresses, const Repository& repository,
                                   const Account& viewer);

}  // namespace emulator
