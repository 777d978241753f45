#pragma once

#include <string>

#include "HostingService.h"
#include "RecordCache.h"

namespace emulator {

/// Bitbucket Cloud's API 2.0: Host api.bitbucket.org, `/2.0/user`, `/2.0/repositories` and
/// `/2.0/repositories/WORKSPACE`. Takes access tokens as bearer tokens, and Basic with the password
/// (or a token in its place). It sends no "Link" header.
///
/// The list across workspaces can be switched off, as the service has done (ServerOptions).
/// Accounts with any rate limit get 429 in plain text; OmitsLastLink leaves "size" out. Other
/// restrictions are unknown here.
class BitbucketService : public HostingService {
public:
    explicit BitbucketService(const ServiceSettings& settings) : settings_(settings) {}

    bool serves(const Request& request) const override;
    Answer answer(const Request& request) override;

private:
    Answer refused(const Request& request) const;
    Answer route(const Request& request, const Account* viewer);
    Answer repositories(const Request& request, const Account* viewer);

    const ServiceSettings settings_;
    RecordCache records_;
};

}  // namespace emulator
