#include "BitbucketService.h"

#include <limits>
#include <nlohmann/json.hpp>

#include "Authorization.h"
#include "BitbucketListing.h"
#include "BitbucketRecords.h"
#include "Digest.h"
#include "JSONText.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view host = "api.bitbucket.org";
constexpr std::string_view repositoriesPath = "/2.0/repositories";
constexpr std::size_t usualPageSize = 10;
constexpr std::size_t maximalPageSize = 100;

Answer errorAnswer(unsigned status, const std::string& message, const std::string& detail = {}) {
    Json error{{"message", message}};
    if (!detail.empty()) {
        error["detail"] = detail;
    }
    return jsonAnswer(status, jsonText(Json{{"type", "error"}, {"error", error}}));
}

Answer withdrawn() {
    return errorAnswer(410, "This API has been removed.",
                       "Repositories are no longer listed across workspaces. List those of one "
                       "workspace with /2.0/repositories/{workspace}.");
}

/// The empty page of a request without credentials.
Answer anonymousRefused() {
    Answer answer;
    answer.status = 401;
    answer.headers.add("WWW-Authenticate", "Basic realm=\"Bitbucket.org HTTP\"");
    return answer;
}

Answer tooManyRequests() {
    return textAnswer(429, "Rate limit for this resource has been exceeded\n");
}

}  // namespace

bool BitbucketService::serves(const Request& request) const {
    return request.host() == host;
}

Answer BitbucketService::answer(const Request& request) {
    const auto authorization = readAuthorization(request);
    const auto* viewer = accountWith(authorization, settings_.accounts, settings_.clock());
    const bool anonymous = authorization.scheme == Authorization::Scheme::None;
    auto answer = !anonymous && viewer == nullptr ? refused(request) : route(request, viewer);
    answer.headers.add("Server", "envoy");
    answer.headers.add("Vary", "Authorization, Origin");
    answer.headers.add("X-Request-Id", sha256(std::to_string(request.number)).substr(0, 32));
    answer.headers.add("X-Served-By", "emulator");
    return answer;
}

// Wrong passwords are refused in plain text, wrong tokens in JSON.
Answer BitbucketService::refused(const Request& request) const {
    const auto authorization = readAuthorization(request);
    if (authorization.scheme != Authorization::Scheme::Bearer) {
        auto answer = textAnswer(401,
                                 "You may not have access to this, or the password is not an "
                                 "app password.\n");
        answer.headers.set("Content-Type", "text/plain");
        answer.headers.add("WWW-Authenticate", "Basic realm=\"Bitbucket.org HTTP\"");
        return answer;
    }
    constexpr auto beginning = std::numeric_limits<std::int64_t>::min();
    const bool expired = bool(settings_.accounts.withToken(authorization.secret, beginning));
    auto answer =
        errorAnswer(401, expired ? "Access token expired. Use your refresh token to "
                                   "obtain a new access token."
                                 : "Token is invalid or not supported for this endpoint.");
    answer.headers.add("WWW-Authenticate", "OAuth realm=\"Bitbucket.org HTTP\"");
    return answer;
}

Answer BitbucketService::route(const Request& request, const Account* viewer) {
    if (isLimited(viewer)) {
        return tooManyRequests();
    }
    if (request.method != "GET" && request.method != "HEAD") {
        return errorAnswer(405, "Method not allowed");
    }
    if (request.path == "/2.0/user") {
        return viewer != nullptr ? jsonAnswer(200, bitbucketUserRecord(*viewer))
                                 : anonymousRefused();
    }
    const std::string_view path = request.path;
    if (path == repositoriesPath ||
        (path.starts_with(repositoriesPath) && path[repositoriesPath.size()] == '/')) {
        return repositories(request, viewer);
    }
    return errorAnswer(404, "Resource not found", "There is no API hosted at this URL.");
}

Answer BitbucketService::repositories(const Request& request, const Account* viewer) {
    const auto workspace = request.path.substr(
        std::min(request.path.size(), repositoriesPath.size() + std::string_view("/").size()));
    if (workspace.empty() && !settings_.listsAcrossWorkspaces) {
        return withdrawn();
    }
    if (viewer == nullptr && request.queryValue("role")) {
        return anonymousRefused();
    }
    const auto selection =
        selectBitbucketRepositories(request, settings_.accounts, viewer, workspace);
    if (!selection.refusal.empty()) {
        return errorAnswer(400, selection.refusal);
    }
    const auto page =
        readPage(request, selection.repositories.size(), usualPageSize, maximalPageSize, "pagelen");
    const auto login = viewer != nullptr ? viewer->login : "";
    const auto values = jsonArray(selection.repositories, page, [&](const Repository& r) {
        return records_.text(login + " " + std::to_string(r.id),
                             [&] { return bitbucketRepositoryRecord(r, viewer); });
    });
    Json envelope{{"pagelen", page.size}, {"page", page.number}};
    if (viewer == nullptr || viewer->restriction != Restriction::OmitsLastLink) {
        envelope["size"] = page.total;
    }
    const auto neighbour = [&](const char* name, std::size_t number) {
        envelope[name] =
            request.origin() + request.path + "?" + queryWithPage(request.query, number);
    };
    if (page.number < page.count()) {
        neighbour("next", page.number + 1);
    }
    if (page.number > 1) {
        neighbour("previous", page.number - 1);
    }
    auto text = envelope.dump();
    text.insert(1, "\"values\":" + values + ",");
    auto answer = jsonAnswer(200, std::move(text));
    answer.compressible = true;
    return answer;
}

}  // namespace emulator
