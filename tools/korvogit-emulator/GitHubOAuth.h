#pragma once

#include "OAuthService.h"

namespace emulator {

/// GitHub's sign-in: Host github.com, `/login/oauth/authorize` and `/login/oauth/access_token`. The
/// latter answers with a form unless JSON is asked for, and says errors with status 200.
class GitHubOAuth : public OAuthService {
public:
    explicit GitHubOAuth(const ServiceSettings& settings);

protected:
    Refusal refusal(Problem problem) const override;
    Answer tokenAnswer(const Request& request, const Issued& issued) const override;
    Answer tokenRefusal(const Request& request, Problem problem) const override;
    bool expires(const OAuthApplication& application) const override;
};

}  // namespace emulator
