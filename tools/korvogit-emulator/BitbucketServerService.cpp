#include "BitbucketServerService.h"

#include <nlohmann/json.hpp>

#include "Authorization.h"
#include "BitbucketServerRecords.h"
#include "JSONText.h"
#include "Sorting.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view prefix = "/rest/api/1.0";
constexpr std::string_view usersPrefix = "/users/";
constexpr std::size_t usualLimit = 25;
constexpr std::size_t maximalLimit = 1000;

Answer errorAnswer(unsigned status, const std::string& message, const std::string& exception = {}) {
    Json error{{"context", nullptr}, {"message", message}};
    error["exceptionName"] =
        exception.empty() ? Json() : Json("com.atlassian.bitbucket." + exception);
    return jsonAnswer(status, jsonText(Json{{"errors", Json::array({error})}}));
}

Answer unauthorized(const std::string& message, const std::string& exception) {
    auto answer = errorAnswer(401, message, exception);
    answer.headers.add("WWW-Authenticate", "Basic realm=\"Atlassian Bitbucket\"");
    return answer;
}

Answer notPermitted() {
    return unauthorized("You are not permitted to access this resource", "AuthorisationException");
}

Answer tooManyRequests() {
    auto answer = errorAnswer(429, "You have sent too many requests. Please try again later.");
    answer.headers.add("Retry-After", "1");
    answer.headers.add("X-RateLimit-Limit", "60");
    answer.headers.add("X-RateLimit-Remaining", "0");
    return answer;
}

}  // namespace

bool BitbucketServerService::serves(const Request& request) const {
    return request.path.starts_with(std::string(prefix) + "/");
}

Answer BitbucketServerService::answer(const Request& request) {
    const auto authorization = readAuthorization(request);
    const auto* viewer = accountWith(authorization, settings_.accounts, settings_.clock());
    const bool anonymous = authorization.scheme == Authorization::Scheme::None;
    auto answer =
        !anonymous && viewer == nullptr
            ? unauthorized("Authentication failed. Please check your credentials and try again.",
                           "auth.IncorrectPasswordAuthenticationException")
            : route(request, viewer);
    answer.headers.set("Content-Type", "application/json;charset=UTF-8");
    answer.headers.add("X-AREQUESTID", "@EMU1x" + std::to_string(request.number) + "x0");
    answer.headers.add("Cache-Control", "private, no-cache, no-store, no-transform");
    answer.headers.add("Vary", "X-AUSERNAME,X-AUSERID,Cookie,accept-encoding");
    if (viewer != nullptr) {
        answer.headers.add("X-AUSERID", std::to_string(viewer->id));
        answer.headers.add("X-AUSERNAME", viewer->login);
    }
    return answer;
}

Answer BitbucketServerService::route(const Request& request, const Account* viewer) {
    if (isLimited(viewer)) {
        return tooManyRequests();
    }
    const auto path = std::string_view(request.path).substr(prefix.size());
    if (request.method != "GET" && request.method != "HEAD") {
        return errorAnswer(405, "HTTP 405 Method Not Allowed");
    }
    if (path.starts_with(usersPrefix)) {
        return user(request, viewer);
    }
    return path == "/repos" ? repositories(request, viewer)
                            : errorAnswer(404, "null for uri: " + request.origin() + request.path);
}

Answer BitbucketServerService::user(const Request& request, const Account* viewer) const {
    if (viewer == nullptr) {
        return notPermitted();
    }
    const auto name = percentDecoded(request.path.substr(prefix.size() + usersPrefix.size()));
    const auto* account = settings_.accounts.withLogin(lowered(name));
    return account != nullptr
               ? jsonAnswer(200, bitbucketServerUserRecord(request.origin(), *account))
               : errorAnswer(404, "User " + name + " does not exist.", "user.NoSuchUserException");
}

std::vector<const Repository*> BitbucketServerService::selected(const Request& request,
                                                                const Account* viewer) const {
    const auto permission = request.queryValue("permission");
    const auto visibility = request.queryValue("visibility");
    const auto name = lowered(request.queryValue("name").value_or(""));
    std::vector<const Repository*> repositories;
    for (const auto& account : settings_.accounts.all()) {
        for (const auto& repository : account.repositories) {
            const bool isPublic = repository.visibility == Visibility::Public;
            const bool mine = &account == viewer;
            // With a permission asked for, the list is of the viewer's own repositories.
            const bool readable = mine || (!permission && isPublic);
            const bool enough = permission != "REPO_ADMIN" || !repository.owner.isOrganization;
            const bool shown = !visibility || (*visibility == "public") == isPublic;
            if (readable && enough && shown &&
                lowered(repository.name).find(name) != std::string::npos) {
                repositories.push_back(&repository);
            }
        }
    }
    sortBy(repositories, true, [](const Repository& r) { return lowered(r.name); });
    return repositories;
}

Answer BitbucketServerService::repositories(const Request& request, const Account* viewer) {
    const auto repositories = selected(request, viewer);
    const auto limit =
        std::min(positiveNumber(request, "limit").value_or(usualLimit), maximalLimit);
    const auto start = positiveNumber(request, "start").value_or(0);
    std::string values = "[";
    std::size_t next = start;
    for (; next < repositories.size() && next - start < limit; ++next) {
        const auto& repository = *repositories[next];
        values += next == start ? "" : ",";
        values += records_.text(request.origin() + " " + std::to_string(repository.id), [&] {
            return bitbucketServerRepositoryRecord(request.origin(), request.host(), repository);
        });
    }
    const bool isLast = next >= repositories.size();
    const Json envelope{{"start", start}, {"nextPageStart", isLast ? Json() : Json(next)}};
    const Json head{{"size", next - start}, {"limit", limit}, {"isLastPage", isLast}};
    auto text = head.dump();
    text.replace(text.size() - 1, 1, ",\"values\":" + values + "],");
    auto answer = jsonAnswer(200, text + envelope.dump().substr(1));
    answer.compressible = true;
    return answer;
}

}  // namespace emulator
