#pragma once

#include <map>
#include <mutex>
#include <string>

#include "HostingService.h"
#include "RecordCache.h"

namespace emulator {

/// GitHub's REST API, version 3, as far as accounts and their repositories go: `/user`,
/// `/user/repos` and `/repos/OWNER/NAME`, for GET and HEAD.
class GitHubService : public HostingService {
public:
    enum class Edition {
        Public,      ///< Host api.github.com, paths as they are
        Enterprise,  ///< every other host, paths under /api/v3, without rate limits
    };

    GitHubService(const ServiceSettings& settings, Edition edition);

    bool serves(const Request& request) const override;
    Answer answer(const Request& request) override;

private:
    struct Usage {
        std::int64_t used = 0;
        std::int64_t resets = 0;
    };

    Answer authenticated(const Request& request, const Accounts::Holder& holder);
    Answer route(const Request& request, const Accounts::Holder& holder);
    Answer user(const Request& request, const Account& account) const;
    Answer repositories(const Request& request, const Accounts::Holder& holder);
    Answer repository(const Request& request, const Accounts::Holder& holder);
    Answer limitExceeded(const Account& account) const;
    Answer secondaryLimitExceeded() const;

    bool countRequest(const Accounts::Holder& holder, Usage& usage);
    void uncountRequest(const Accounts::Holder& holder, Usage& usage);
    void addRateLimit(Answer& answer, const Usage& usage) const;
    void finish(Answer& answer, const Request& request) const;

    std::string apiPath(const Request& request) const;
    std::string record(const Request& request, const Repository& repository,
                       const Accounts::Holder& holder);

    const ServiceSettings settings_;
    const Edition edition_;

    RecordCache records_;                 // by address and repository
    std::mutex mutex_;                    // guards what follows
    std::map<std::string, Usage> usage_;  // by token
};

}  // namespace emulator
