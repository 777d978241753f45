#pragma once

#include <optional>
#include <string>
#include <vector>

#include "HostingService.h"
#include "OAuthGrants.h"

namespace emulator {

/// The authorization-code sign-in (RFC 6749, 4.1) of one hosting service: a page where a person
/// allows or denies, and an endpoint where an application exchanges what it got for a token, which
/// the service's API then accepts. A service says what is its own by the functions below.
class OAuthService : public HostingService {
public:
    bool serves(const Request& request) const override;
    Answer answer(const Request& request) override;

protected:
    struct Provider {
        std::string name{};
        std::string host{};
        std::string authorizePath{};
        std::string tokenPath{};
        std::string tokenPrefix{};
        std::string refreshTokenPrefix{};
        std::int64_t codeLifetime = 600;  ///< in seconds, as all lifetimes here
        std::int64_t tokenLifetime = 0;
        std::int64_t refreshTokenLifetime = 0;
    };

    OAuthService(const ServiceSettings& settings, Provider provider);

    const Provider& provider() const { return provider_; }

    /// An error as the protocol has it.
    struct Refusal {
        std::string error{};
        std::string description{};
        std::string page{};  ///< "error_uri"; empty for none
    };
    enum class Problem {
        WrongClient,    ///< unknown, or its secret is wrong
        WrongRedirect,  ///< not where this application's people may be sent
        Denied,         ///< the person said no
        WrongCode,      ///< unknown, used, or too old; so for the following
        WrongRefreshToken,
        WrongGrantType,
    };
    struct Issued {
        std::string token{};
        std::vector<std::string> scopes{};
        std::optional<std::string> refreshToken{};  ///< with it, the token ends
        bool isRefresh = false;
    };

    virtual Refusal refusal(Problem problem) const = 0;
    virtual Answer tokenAnswer(const Request& request, const Issued& issued) const = 0;
    virtual Answer tokenRefusal(const Request& request, Problem problem) const = 0;
    /// Whether tokens of this application end and come with a refresh token.
    virtual bool expires(const OAuthApplication& application) const = 0;

private:
    Answer authorize(const Request& request);
    Answer decide(const Request& request, const OAuthApplication& application,
                  const std::string& redirectURL);
    Answer token(const Request& request);
    Answer issue(const Request& request, const OAuthApplication& application, OAuthGrant grant,
                 bool isRefresh);
    const OAuthApplication* applicationWith(const std::string& clientId) const;

    const ServiceSettings settings_;
    const Provider provider_;
    OAuthGrants grants_;
};

/// The items as a form's text, percent-encoded, a blank as "+".
std::string formText(const std::vector<QueryItem>& items);

}  // namespace emulator
