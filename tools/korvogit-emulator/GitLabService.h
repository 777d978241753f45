#pragma once

#include <optional>
#include <string>

#include "GitLabRecords.h"
#include "HostingService.h"
#include "RecordCache.h"

namespace emulator {

/// GitLab's REST API, version 4, of gitlab.com and of any other host, at paths under /api/v4:
/// `/user`, `/projects`, `/projects/ID` (301 for a project that has moved: any namespace
/// "former-LOGIN"), and `PUT /user/status`, whose refusals have the shape of errors of single
/// fields. Tokens come as bearer tokens or in "PRIVATE-TOKEN".
///
/// Accounts with a rate limit get 429 in plain text, those with a secondary limit the HTML of the
/// proxy before the servers; OmitsLastLink is a list too long to count. Other restrictions are
/// unknown here.
class GitLabService : public HostingService {
public:
    explicit GitLabService(const ServiceSettings& settings) : settings_(settings) {}

    bool serves(const Request& request) const override;
    Answer answer(const Request& request) override;

private:
    Answer refused(const std::string& token) const;
    Answer route(const Request& request, const Accounts::Holder& holder);
    Answer projects(const Request& request, const Account* viewer);
    Answer project(const Request& request, const Account* viewer);
    std::string record(const Request& request, const Repository& repository,
                       ProjectDetail detail = ProjectDetail::Full);

    const ServiceSettings settings_;
    RecordCache records_;
};

}  // namespace emulator
