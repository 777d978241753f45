#include "GitHubOAuth.h"

#include <nlohmann/json.hpp>
#include <variant>

#include "Joined.h"

namespace emulator {

namespace {

using Member = std::pair<std::string, std::variant<std::string, std::int64_t>>;

/// In the encoding that the request asks for.
Answer answerWith(const Request& request, const std::vector<Member>& members) {
    if (request.headers.get("Accept").value_or("").find("application/json") != std::string::npos) {
        nlohmann::ordered_json json;
        for (const auto& [name, value] : members) {
            std::visit([&, &key = name](const auto& content) { json[key] = content; }, value);
        }
        return jsonAnswer(200, json.dump());
    }
    std::vector<QueryItem> items;
    for (const auto& [name, value] : members) {
        const auto* number = std::get_if<std::int64_t>(&value);
        items.push_back({name, number ? std::to_string(*number) : std::get<std::string>(value)});
    }
    auto answer = textAnswer(200, formText(items));
    answer.headers.set("Content-Type", "application/x-www-form-urlencoded; charset=utf-8");
    return answer;
}

std::string pageOf(const std::string& part) {
    return "https://docs.github.com/apps/managing-oauth-apps/" + part;
}

}  // namespace

GitHubOAuth::GitHubOAuth(const ServiceSettings& settings)
    : OAuthService(settings, {.name = "GitHub",
                              .host = "github.com",
                              .authorizePath = "/login/oauth/authorize",
                              .tokenPath = "/login/oauth/access_token",
                              .tokenPrefix = "gho_",
                              .refreshTokenPrefix = "ghr_",
                              .tokenLifetime = 28'800,
                              .refreshTokenLifetime = 15'897'600}) {}

bool GitHubOAuth::expires(const OAuthApplication& application) const {
    return application.expiringTokens;
}

OAuthService::Refusal GitHubOAuth::refusal(Problem problem) const {
    const auto tokenErrors = pageOf("troubleshooting-oauth-app-access-token-request-errors/");
    switch (problem) {
        case Problem::WrongClient:
            return {"incorrect_client_credentials",
                    "The client_id and/or client_secret passed are incorrect.",
                    tokenErrors + "#incorrect-client-credentials"};
        case Problem::WrongRedirect:
            return {"redirect_uri_mismatch",
                    "The redirect_uri MUST match the registered callback URL for this application.",
                    tokenErrors + "#redirect-uri-mismatch2"};
        case Problem::Denied:
            return {"access_denied", "The user has denied your application access.",
                    pageOf("troubleshooting-authorization-request-errors/#access-denied")};
        case Problem::WrongCode:
            return {"bad_verification_code", "The code passed is incorrect or expired.",
                    tokenErrors + "#bad-verification-code"};
        case Problem::WrongRefreshToken:
            return {"bad_refresh_token", "The refresh token passed is incorrect or expired.", ""};
        case Problem::WrongGrantType:
            break;
    }
    return {"unsupported_grant_type", "The grant_type is not supported.", ""};
}

Answer GitHubOAuth::tokenAnswer(const Request& request, const Issued& issued) const {
    std::vector<Member> members{{"access_token", issued.token}};
    if (issued.refreshToken) {
        members.emplace_back("expires_in", provider().tokenLifetime);
        members.emplace_back("refresh_token", *issued.refreshToken);
        members.emplace_back("refresh_token_expires_in", provider().refreshTokenLifetime);
    }
    members.emplace_back("scope", joined(issued.scopes, ","));
    members.emplace_back("token_type", "bearer");
    return answerWith(request, members);
}

Answer GitHubOAuth::tokenRefusal(const Request& request, Problem problem) const {
    const auto [error, description, page] = refusal(problem);
    std::vector<Member> members{{"error", error}, {"error_description", description}};
    if (!page.empty()) {
        members.emplace_back("error_uri", page);
    }
    return answerWith(request, members);
}

}  // namespace emulator
