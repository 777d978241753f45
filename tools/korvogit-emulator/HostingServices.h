#pragma once

#include <memory>
#include <vector>

#include "HostingService.h"

namespace emulator {

/// One of each service, in the order in which they are asked whether a request is theirs:
///
/// | service | its requests |
/// |---|---|
/// | GitHub | Host api.github.com |
/// | GitHub Enterprise | any other host, path under /api/v3 |
/// | Bitbucket Cloud | Host api.bitbucket.org |
/// | Bitbucket Server | any host, path under /rest/api/1.0 |
/// | GitLab | any host, path under /api/v4 |
/// | GitHub's sign-in | Host github.com, paths /login/oauth/authorize and …/access_token |
/// | Bitbucket Cloud's sign-in | Host bitbucket.org, paths /site/oauth2/authorize and
/// …/access_token |
///
/// A new service is one class in a file of its own and one line here.
std::vector<std::unique_ptr<HostingService>> makeHostingServices(const ServiceSettings& settings);

}  // namespace emulator
