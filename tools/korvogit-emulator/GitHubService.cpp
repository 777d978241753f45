#include "GitHubService.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "Authorization.h"
#include "Dates.h"
#include "Digest.h"
#include "GitHubListing.h"
#include "GitHubRecords.h"
#include "Joined.h"
#include "Paging.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view enterprisePrefix = "/api/v3";
constexpr std::int64_t hour = 3600;
constexpr std::int64_t secondsToRetryAfter = 60;

Answer errorAnswer(unsigned status, const std::string& message,
                   const std::string& documentation = "https://docs.github.com/rest") {
    return jsonAnswer(status, Json{{"message", message},
                                   {"documentation_url", documentation},
                                   {"status", std::to_string(status)}}
                                  .dump());
}

Answer forbiddenWithoutUserAgent() {
    return textAnswer(
        403,
        "Request forbidden by administrative rules. Please make sure your request has "
        "a User-Agent header "
        "(https://docs.github.com/en/rest/overview/resources-in-the-rest-api"
        "#user-agent-required).\n");
}

Answer singleSignOnRequired(const Account& account) {
    auto answer = errorAnswer(403,
                              "Resource protected by organization SAML enforcement. You must grant "
                              "your Personal Access token access to this organization.",
                              "https://docs.github.com/articles/authenticating-to-a-github-"
                              "organization-with-saml-single-sign-on/");
    answer.headers.add("X-GitHub-SSO", "required; url=https://github.com/orgs/" + account.login +
                                           "-labs/sso?authorization_request=" +
                                           sha256(account.login).substr(0, 32));
    return answer;
}

std::string organizationIds(const Account& account) {
    std::set<std::int64_t> ids;
    for (const auto& repository : account.repositories) {
        if (repository.owner.isOrganization) {
            ids.insert(repository.owner.id);
        }
    }
    std::string text;
    for (const auto id : ids) {
        text += (text.empty() ? "" : ",") + std::to_string(id);
    }
    return text;
}

/// Whether an If-None-Match value names the tag, by weak comparison (RFC 9110, 13.1.2).
bool namesTag(std::string_view list, std::string_view tag) {
    const auto opaque = tag.substr(tag.find('"'));
    return list == "*" || list.find(opaque) != list.npos;
}

GitHubAddresses addressesFor(const Request& request, GitHubService::Edition edition) {
    if (edition == GitHubService::Edition::Public) {
        return {"https://api.github.com", "https://github.com", "github.com",
                "https://avatars.githubusercontent.com"};
    }
    const auto origin = request.origin();
    return {origin + std::string(enterprisePrefix), origin, request.host(), origin + "/avatars"};
}

}  // namespace

GitHubService::GitHubService(const ServiceSettings& settings, Edition edition)
    : settings_(settings), edition_(edition) {}

bool GitHubService::serves(const Request& request) const {
    const bool isPublicHost = request.host() == "api.github.com";
    if (edition_ == Edition::Public) {
        return isPublicHost;
    }
    return !isPublicHost && (request.path == enterprisePrefix ||
                             request.path.starts_with(std::string(enterprisePrefix) + "/"));
}

Answer GitHubService::answer(const Request& request) {
    if (request.headers.get("User-Agent").value_or("").empty()) {
        return forbiddenWithoutUserAgent();
    }
    const auto authorization = readAuthorization(request);
    Answer answer;
    if (authorization.scheme == Authorization::Scheme::None) {
        answer = errorAnswer(401, "Requires authentication");
    } else if (const auto holder =
                   settings_.accounts.withToken(authorization.secret, settings_.clock())) {
        answer = authenticated(request, holder);
    } else {
        answer = errorAnswer(401, "Bad credentials");
    }
    finish(answer, request);
    return answer;
}

Answer GitHubService::authenticated(const Request& request, const Accounts::Holder& holder) {
    Usage usage;
    Answer answer;
    if (!countRequest(holder, usage)) {
        answer = limitExceeded(*holder.account);
    } else if (holder.account->restriction == Restriction::SecondaryLimited) {
        answer = secondaryLimitExceeded();
    } else if (holder.account->restriction == Restriction::SingleSignOn) {
        answer = singleSignOnRequired(*holder.account);
    } else {
        answer = route(request, holder);
    }
    answer.headers.add("X-OAuth-Scopes", joined(holder.token->scopes, ", "));
    answer.headers.add("X-Accepted-OAuth-Scopes", "");
    if (holder.token->expires) {
        answer.headers.add("GitHub-Authentication-Token-Expiration",
                           spacedDate(*holder.token->expires));
    }
    if (answer.status == 200) {
        // The tag is the token's own: two people never share an answer.
        const auto tag = "W/\"" + sha256(holder.token->value + "\n" + answer.body) + "\"";
        answer.headers.add("ETag", tag);
        answer.headers.add("Cache-Control", "private, max-age=60, s-maxage=60");
        if (namesTag(request.headers.get("If-None-Match").value_or(""), tag)) {
            answer.status = 304;
            answer.body.clear();
            uncountRequest(holder, usage);
        }
    }
    addRateLimit(answer, usage);
    return answer;
}

Answer GitHubService::route(const Request& request, const Accounts::Holder& holder) {
    const auto path = apiPath(request);
    if (request.method == "GET" || request.method == "HEAD") {
        if (path == "/user") {
            return user(request, *holder.account);
        }
        if (path == "/user/repos") {
            return repositories(request, holder);
        }
        if (path.starts_with("/repos/")) {
            return repository(request, holder);
        }
    }
    return errorAnswer(404, "Not Found");
}

Answer GitHubService::user(const Request& request, const Account& account) const {
    auto answer = jsonAnswer(200, gitHubUserRecord(addressesFor(request, edition_), account));
    answer.compressible = true;
    return answer;
}

Answer GitHubService::repositories(const Request& request, const Accounts::Holder& holder) {
    const auto selection = selectGitHubRepositories(request, holder);
    if (!selection.refusal.empty()) {
        return jsonAnswer(422, selection.refusal);
    }
    const auto page = readPage(request, selection.repositories.size(), 30, 100);
    auto answer = jsonAnswer(200, jsonArray(selection.repositories, page, [&](const auto& r) {
                                 return record(request, r, holder);
                             }));
    answer.compressible = true;
    const std::string base = addressesFor(request, edition_).api + "/user/repos";
    const bool counted = holder.account->restriction != Restriction::OmitsLastLink;
    if (const auto links = linkHeader(base, request, page, counted); !links.empty()) {
        answer.headers.add("Link", links);
    }
    if (selection.leftOut) {
        answer.headers.add("X-GitHub-SSO",
                           "partial-results; organizations=" + organizationIds(*holder.account));
    }
    return answer;
}

Answer GitHubService::repository(const Request& request, const Accounts::Holder& holder) {
    const auto path = apiPath(request);
    const auto fullName = path.substr(std::string_view("/repos/").size());
    for (const auto& account : settings_.accounts.all()) {
        for (const auto& candidate : account.repositories) {
            const bool visible =
                &account == holder.account || candidate.visibility == Visibility::Public;
            if (visible && equalIgnoringCase(candidate.fullName(), fullName)) {
                auto answer = jsonAnswer(200, record(request, candidate, holder));
                answer.compressible = true;
                return answer;
            }
        }
    }
    return errorAnswer(404, "Not Found");
}

Answer GitHubService::limitExceeded(const Account& account) const {
    return errorAnswer(account.restriction == Restriction::RateLimitedAs429 ? 429 : 403,
                       "API rate limit exceeded for user ID " + std::to_string(account.id) + ".",
                       "https://docs.github.com/rest/overview/rate-limits-for-the-rest-api");
}

Answer GitHubService::secondaryLimitExceeded() const {
    auto answer = errorAnswer(
        403,
        "You have exceeded a secondary rate limit. Please wait a few minutes before you try again.",
        "https://docs.github.com/rest/overview/rate-limits-for-the-rest-api"
        "#about-secondary-rate-limits");
    answer.headers.add("Retry-After", std::to_string(secondsToRetryAfter));
    return answer;
}

bool GitHubService::countRequest(const Accounts::Holder& holder, Usage& usage) {
    const bool exhausted = holder.account->restriction == Restriction::RateLimited ||
                           holder.account->restriction == Restriction::RateLimitedAs429;
    const auto now = settings_.clock();
    const std::lock_guard lock(mutex_);
    auto& own = usage_[holder.token->value];
    if (own.resets <= now) {
        own = {0, now + hour};
    }
    if (exhausted) {
        own.used = settings_.rateLimit;
    }
    const bool unlimited = edition_ == Edition::Enterprise && !exhausted;
    const bool allowed = unlimited || own.used < settings_.rateLimit;
    own.used += allowed ? 1 : 0;
    usage = own;
    return allowed;
}

// An answer that says "unchanged" costs nothing of the limit.
void GitHubService::uncountRequest(const Accounts::Holder& holder, Usage& usage) {
    const std::lock_guard lock(mutex_);
    --usage_[holder.token->value].used;
    --usage.used;
}

void GitHubService::addRateLimit(Answer& answer, const Usage& usage) const {
    if (edition_ == Edition::Enterprise && usage.used < settings_.rateLimit) {
        return;
    }
    const auto remaining = std::max<std::int64_t>(0, settings_.rateLimit - usage.used);
    answer.headers.add("X-RateLimit-Limit", std::to_string(settings_.rateLimit));
    answer.headers.add("X-RateLimit-Remaining", std::to_string(remaining));
    answer.headers.add("X-RateLimit-Reset", std::to_string(usage.resets));
    answer.headers.add("X-RateLimit-Used", std::to_string(usage.used));
    answer.headers.add("X-RateLimit-Resource", "core");
}

void GitHubService::finish(Answer& answer, const Request& request) const {
    const auto digest = sha256(std::to_string(request.number));
    answer.headers.add("Server", "github.com");
    answer.headers.add("Vary",
                       "Accept, Authorization, Cookie, X-GitHub-OTP, Accept-Encoding, "
                       "X-Requested-With");
    answer.headers.add("X-GitHub-Media-Type", "github.v3; format=json");
    answer.headers.add("X-GitHub-Request-Id", digest.substr(0, 4) + ":" + digest.substr(4, 6) +
                                                  ":" + digest.substr(10, 7) + ":" +
                                                  digest.substr(17, 7) + ":" +
                                                  digest.substr(24, 8));
    answer.headers.add("Access-Control-Allow-Origin", "*");
    answer.headers.add("X-Content-Type-Options", "nosniff");
    if (edition_ == Edition::Enterprise) {
        answer.headers.add("X-GitHub-Enterprise-Version", "3.12.0");
    }
}

std::string GitHubService::apiPath(const Request& request) const {
    return edition_ == Edition::Enterprise ? request.path.substr(enterprisePrefix.size())
                                           : request.path;
}

std::string GitHubService::record(const Request& request, const Repository& repository,
                                  const Accounts::Holder& holder) {
    const auto addresses = addressesFor(request, edition_);
    const auto key =
        addresses.api + " " + holder.account->login + " " + std::to_string(repository.id);
    return records_.text(
        key, [&] { return gitHubRepositoryRecord(addresses, repository, *holder.account); });
}

}  // namespace emulator
