#pragma once

#include "OAuthService.h"

namespace emulator {

/// Bitbucket Cloud's sign-in: Host bitbucket.org, `/site/oauth2/authorize` and
/// `/site/oauth2/access_token`. Answers are JSON, errors have status 400; every token ends and
/// comes with a refresh token.
class BitbucketOAuth : public OAuthService {
public:
    explicit BitbucketOAuth(const ServiceSettings& settings);

protected:
    Refusal refusal(Problem problem) const override;
    Answer tokenAnswer(const Request& request, const Issued& issued) const override;
    Answer tokenRefusal(const Request& request, Problem problem) const override;
    bool expires(const OAuthApplication&) const override { return true; }
};

}  // namespace emulator
