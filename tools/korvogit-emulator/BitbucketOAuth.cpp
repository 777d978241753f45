#include "BitbucketOAuth.h"

#include <nlohmann/json.hpp>

#include "Joined.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

}  // namespace

BitbucketOAuth::BitbucketOAuth(const ServiceSettings& settings)
    : OAuthService(settings, {.name = "Bitbucket",
                              .host = "bitbucket.org",
                              .authorizePath = "/site/oauth2/authorize",
                              .tokenPath = "/site/oauth2/access_token",
                              .tokenLifetime = 7'200,
                              .refreshTokenLifetime = 7'776'000}) {}

OAuthService::Refusal BitbucketOAuth::refusal(Problem problem) const {
    switch (problem) {
        case Problem::WrongClient:
            return {"unauthorized_client", "Invalid OAuth client credentials"};
        case Problem::WrongRedirect:
            return {"invalid_request", "redirect_uri does not match the consumer's callback URL"};
        case Problem::Denied:
            return {"access_denied", "The resource owner denied the request"};
        case Problem::WrongCode:
            return {"invalid_grant", "The specified code is not valid."};
        case Problem::WrongRefreshToken:
            return {"invalid_grant", "Invalid refresh_token"};
        case Problem::WrongGrantType:
            break;
    }
    return {"unsupported_grant_type", "Unsupported grant type"};
}

Answer BitbucketOAuth::tokenAnswer(const Request&, const Issued& issued) const {
    return jsonAnswer(200,
                      Json{{"access_token", issued.token},
                           {"scopes", joined(issued.scopes, " ")},
                           {"token_type", "bearer"},
                           {"expires_in", provider().tokenLifetime},
                           {"state", issued.isRefresh ? "refresh_token" : "authorization_code"},
                           {"refresh_token", issued.refreshToken.value_or("")}}
                          .dump());
}

Answer BitbucketOAuth::tokenRefusal(const Request&, Problem problem) const {
    const auto [error, description, page] = refusal(problem);
    return jsonAnswer(400, Json{{"error_description", description}, {"error", error}}.dump());
}

}  // namespace emulator
