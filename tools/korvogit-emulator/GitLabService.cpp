#include "GitLabService.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "Authorization.h"
#include "Digest.h"
#include "GitLabListing.h"
#include "GitLabRecords.h"
#include "Paging.h"
#include "Sorting.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view prefix = "/api/v4";
constexpr std::size_t usualPageSize = 20;
constexpr std::size_t maximalPageSize = 100;
/// Lists longer than this are not counted: no total, no last page.
constexpr std::size_t longestCounted = 10'000;
constexpr std::size_t farthestOffset = 50'000;
constexpr std::size_t longestStatus = 100;

// The four shapes of errors.

Answer withMessage(unsigned status, const std::string& message) {
    return jsonAnswer(status, Json{{"message", message}}.dump());
}

Answer withFieldErrors(const std::string& field, const std::string& error) {
    return jsonAnswer(400, Json{{"message", {{field, Json::array({error})}}}}.dump());
}

Answer withOAuthError(unsigned status, const std::string& error, const std::string& description) {
    Json json{{"error", error}, {"error_description", description}};
    if (status == 403) {
        json["scope"] = "api read_api";
    }
    return jsonAnswer(status, json.dump());
}

Answer withError(unsigned status, const std::string& error) {
    return jsonAnswer(status, Json{{"error", error}}.dump());
}

Answer tooManyRequests() {
    auto answer = textAnswer(429, "Retry later\n");
    answer.headers.set("Content-Type", "text/plain");
    answer.headers.add("Retry-After", "60");
    return answer;
}

Answer tooManyRequestsAtTheProxy() {
    Answer answer;
    answer.status = 429;
    answer.headers.add("Content-Type", "text/html");
    answer.headers.add("Retry-After", "60");
    answer.body =
        "<html>\r\n<head><title>429 Too Many Requests</title></head>\r\n<body>\r\n"
        "<center><h1>429 Too Many Requests</h1></center>\r\n</body>\r\n</html>\r\n";
    return answer;
}

std::string tokenOf(const Request& request) {
    if (auto own = request.headers.get("PRIVATE-TOKEN")) {
        return *own;
    }
    const auto authorization = readAuthorization(request);
    return authorization.scheme == Authorization::Scheme::Bearer ? authorization.secret : "";
}

/// The generated tokens have GitHub's names of scopes; "repo" is what "api" is here.
bool mayUseAPI(const Token& token) {
    return std::ranges::any_of(token.scopes, [](const auto& scope) {
        return scope == "api" || scope == "read_api" || scope == "repo";
    });
}

void addPaging(Answer& answer, const Request& request, const Page& page, bool counted) {
    const bool hasNext = page.number < page.count();
    const bool hasPrevious = page.number > 1;
    const auto number = [](std::size_t value) { return std::to_string(value); };
    answer.headers.add("X-Page", number(page.number));
    answer.headers.add("X-Per-Page", number(page.size));
    answer.headers.add("X-Next-Page", hasNext ? number(page.number + 1) : "");
    answer.headers.add("X-Prev-Page", hasPrevious ? number(page.number - 1) : "");
    std::string links;
    const auto link = [&](const std::string& relation, std::size_t target) {
        links += links.empty() ? "" : ", ";
        links += "<" + request.origin() + request.path + "?" +
                 queryWithPage(request.query, target) + ">; rel=\"" + relation + "\"";
    };
    if (hasPrevious) {
        link("prev", page.number - 1);
    }
    if (hasNext) {
        link("next", page.number + 1);
    }
    link("first", 1);
    if (counted) {
        link("last", page.count());
        answer.headers.add("X-Total", number(page.total));
        answer.headers.add("X-Total-Pages", number(page.count()));
    }
    answer.headers.add("Link", links);
}

Answer userStatus(const Request& request) {
    const auto status = Json::parse(request.body, nullptr, false);
    if (!status.is_object() || !status.value("message", Json("")).is_string()) {
        return withError(400, "message is invalid");
    }
    const auto message = status.value("message", std::string());
    if (message.size() > longestStatus) {
        return withFieldErrors("message", "is too long (maximum is 100 characters)");
    }
    return jsonAnswer(200, Json{{"emoji", "speech_balloon"}, {"message", message}}.dump());
}

}  // namespace

bool GitLabService::serves(const Request& request) const {
    return request.path.starts_with(std::string(prefix) + "/");
}

Answer GitLabService::answer(const Request& request) {
    const auto token = tokenOf(request);
    const auto holder = settings_.accounts.withToken(token, settings_.clock());
    auto answer = !token.empty() && !holder ? refused(token) : route(request, holder);
    answer.headers.add("X-Request-Id", sha256(std::to_string(request.number)).substr(0, 26));
    answer.headers.add("X-Runtime", "0.031337");
    answer.headers.add("X-Content-Type-Options", "nosniff");
    answer.headers.add("Vary", "Origin");
    answer.headers.add("Cache-Control", "max-age=0, private, must-revalidate");
    return answer;
}

Answer GitLabService::refused(const std::string& token) const {
    constexpr auto beginning = std::numeric_limits<std::int64_t>::min();
    if (settings_.accounts.withToken(token, beginning)) {
        return withOAuthError(401, "invalid_token",
                              "Token is expired. You can either do re-authorization or token "
                              "refresh.");
    }
    return withMessage(401, "401 Unauthorized");
}

Answer GitLabService::route(const Request& request, const Accounts::Holder& holder) {
    if (isLimited(holder.account)) {
        return holder.account->restriction == Restriction::SecondaryLimited
                   ? tooManyRequestsAtTheProxy()
                   : tooManyRequests();
    }
    if (holder && !mayUseAPI(*holder.token)) {
        return withOAuthError(403, "insufficient_scope",
                              "The request requires higher privileges than provided by the access "
                              "token.");
    }
    const auto path = std::string_view(request.path).substr(prefix.size());
    const bool reads = request.method == "GET" || request.method == "HEAD";
    if (reads && path == "/projects") {
        return projects(request, holder.account);
    }
    if (reads && path.starts_with("/projects/")) {
        return project(request, holder.account);
    }
    if (path.starts_with("/user") && !holder) {
        return withMessage(401, "401 Unauthorized");
    }
    if (reads && path == "/user") {
        return jsonAnswer(200, gitLabUserRecord(request.origin(), *holder.account));
    }
    if (request.method == "PUT" && path == "/user/status") {
        return userStatus(request);
    }
    return withError(404, "404 Not Found");
}

Answer GitLabService::projects(const Request& request, const Account* viewer) {
    const auto selection =
        selectGitLabProjects(request, settings_.accounts, viewer, settings_.strict);
    if (!selection.refusal.empty()) {
        return withError(400, selection.refusal + " does not have a valid value");
    }
    const auto page =
        readPage(request, selection.repositories.size(), usualPageSize, maximalPageSize);
    if ((page.number - 1) * page.size > farthestOffset) {
        return withError(405,
                         "Offset pagination has a maximum allowed offset of 50000 for requests "
                         "that return objects of type Project. Remaining records can be retrieved "
                         "using keyset pagination.");
    }
    auto answer = jsonAnswer(200, jsonArray(selection.repositories, page, [&](const auto& r) {
                                 return record(request, r, selection.detail);
                             }));
    answer.headers.set("Content-Type", "application/json");
    answer.compressible = true;
    const bool uncounted = viewer != nullptr && viewer->restriction == Restriction::OmitsLastLink;
    addPaging(answer, request, page, !uncounted && page.total <= longestCounted);
    return answer;
}

// A project is addressed by its id, or by its path with the slash escaped.
Answer GitLabService::project(const Request& request, const Account* viewer) {
    constexpr std::string_view formerly = "former-";
    const auto path = request.path.substr(prefix.size() + std::string_view("/projects/").size());
    auto name = percentDecoded(path);
    const bool moved = name.starts_with(formerly);
    name.erase(0, moved ? formerly.size() : 0);
    for (const auto& account : settings_.accounts.all()) {
        for (const auto& candidate : account.repositories) {
            const bool visible = &account == viewer || candidate.visibility == Visibility::Public;
            const auto id = std::to_string(candidate.id);
            if (!visible || (name != id && lowered(name) != lowered(candidate.fullName()))) {
                continue;
            }
            if (moved) {
                auto answer = textAnswer(301, "");
                answer.headers.add("Location",
                                   request.origin() + std::string(prefix) + "/projects/" + id);
                return answer;
            }
            return jsonAnswer(200, record(request, candidate));
        }
    }
    return withMessage(404, "404 Project Not Found");
}

std::string GitLabService::record(const Request& request, const Repository& repository,
                                  ProjectDetail detail) {
    const std::string kind = detail == ProjectDetail::Simple ? " simple " : " ";
    return records_.text(request.origin() + kind + std::to_string(repository.id), [&] {
        return gitLabProjectRecord(request.origin(), request.host(), repository, detail);
    });
}

}  // namespace emulator
