#pragma once

#include <string>

#include "HostingService.h"
#include "RecordCache.h"

namespace emulator {

/// Bitbucket Server's REST API 1.0 of any host, at paths under /rest/api/1.0: `/users/NAME` and
/// `/repos` with permission, visibility, name, start and limit. Takes Basic with the password or a
/// token in its place, and bearer tokens. Pages are told in the body alone, counted in
/// repositories.
///
/// Accounts with any rate limit get 429. Other restrictions are unknown here.
class BitbucketServerService : public HostingService {
public:
    explicit BitbucketServerService(const ServiceSettings& settings) : settings_(settings) {}

    bool serves(const Request& request) const override;
    Answer answer(const Request& request) override;

private:
    Answer route(const Request& request, const Account* viewer);
    Answer user(const Request& request, const Account* viewer) const;
    Answer repositories(const Request& request, const Account* viewer);
    std::vector<const Repository*> selected(const Request& request, const Account* viewer) const;

    const ServiceSettings settings_;
    RecordCache records_;
};

}  // namespace emulator
