#include "OAuthService.h"

#include <algorithm>

#include "Authorization.h"
#include "SignInPage.h"

namespace emulator {

namespace {

using Items = std::vector<QueryItem>;

/// The last value of that name; the empty text when there is none.
std::string valueOf(const Items& items, std::string_view name) {
    std::string value;
    for (const auto& item : items) {
        if (item.name == name) {
            value = item.value;
        }
    }
    return value;
}

std::string encoded(std::string_view text) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                           (c >= 'a' && c <= 'z') ||
                           std::string_view("-._*").find(c) != std::string_view::npos;
        if (plain) {
            result += c;
        } else if (c == ' ') {
            result += '+';
        } else {
            result += '%';
            result += digits[byte >> 4];
            result += digits[byte & 15];
        }
    }
    return result;
}

std::vector<std::string> scopesOf(const Request& request) {
    const auto text = request.queryValue("scope").value_or("");
    std::vector<std::string> scopes;
    std::string scope;
    for (const char c : text + ",") {
        if (c != ',' && c != ' ') {
            scope += c;
        } else if (!scope.empty()) {
            scopes.push_back(std::exchange(scope, {}));
        }
    }
    return scopes;
}

Answer redirectTo(std::string url, Items items, const Request& request) {
    if (const auto state = request.queryValue("state")) {
        items.push_back({"state", *state});
    }
    url += (url.find('?') == url.npos ? "?" : "&") + formText(items);
    Answer answer;
    answer.status = 302;
    answer.headers.add("Location", url);
    answer.headers.add("Cache-Control", "no-store");
    return answer;
}

}  // namespace

std::string formText(const Items& items) {
    std::string text;
    for (const auto& [name, value] : items) {
        text += (text.empty() ? "" : "&") + encoded(name) + "=" + encoded(value);
    }
    return text;
}

OAuthService::OAuthService(const ServiceSettings& settings, Provider provider)
    : settings_(settings), provider_(std::move(provider)) {}

bool OAuthService::serves(const Request& request) const {
    return request.host() == provider_.host &&
           (request.path == provider_.authorizePath || request.path == provider_.tokenPath);
}

Answer OAuthService::answer(const Request& request) {
    if (request.path == provider_.authorizePath) {
        return authorize(request);
    }
    if (request.method == "POST") {
        return token(request);
    }
    auto answer = textAnswer(405, "Only POST is possible here.\n");
    answer.headers.add("Allow", "POST");
    return answer;
}

const OAuthApplication* OAuthService::applicationWith(const std::string& clientId) const {
    const auto found =
        std::ranges::find(settings_.applications, clientId, &OAuthApplication::clientId);
    return found == settings_.applications.end() ? nullptr : &*found;
}

Answer OAuthService::authorize(const Request& request) {
    const auto* application = applicationWith(request.queryValue("client_id").value_or(""));
    if (application == nullptr) {
        return signInProblem(404, provider_.name, "There is no application with this client ID.");
    }
    const auto redirectURL =
        request.queryValue("redirect_uri").value_or(application->callbacks.front());
    if (!application->allows(redirectURL)) {
        // Nobody is sent to an address that nobody registered.
        return signInProblem(400, provider_.name, refusal(Problem::WrongRedirect).description);
    }
    if (request.method == "POST") {
        return decide(request, *application, redirectURL);
    }
    SignInPage page;
    page.service = provider_.name;
    page.application = application->name;
    page.scopes = scopesOf(request);
    page.suggestedLogin = request.queryValue("login").value_or("");
    for (const auto& account : settings_.accounts.all()) {
        page.logins.push_back(account.login);
    }
    return page.answer();
}

Answer OAuthService::decide(const Request& request, const OAuthApplication& application,
                            const std::string& redirectURL) {
    const auto form = parseQuery(request.body);
    const auto login = valueOf(form, "login");
    if (valueOf(form, "decision") != "allow") {
        const auto [error, description, page] = refusal(Problem::Denied);
        Items items{{"error", error}, {"error_description", description}};
        if (!page.empty()) {
            items.push_back({"error_uri", page});
        }
        return redirectTo(redirectURL, std::move(items), request);
    }
    if (settings_.accounts.withLogin(login) == nullptr) {
        return signInProblem(400, provider_.name, "There is no such account.");
    }
    const auto code = grants_.makeSecret("");
    grants_.keep(code,
                 {OAuthGrant::Kind::Code, application.clientId, login, scopesOf(request),
                  request.queryValue("redirect_uri")},
                 settings_.clock() + provider_.codeLifetime);
    return redirectTo(redirectURL, {{"code", code}}, request);
}

Answer OAuthService::token(const Request& request) {
    const auto form = parseQuery(request.body);
    const auto authorization = readAuthorization(request);
    const bool isBasic = authorization.scheme == Authorization::Scheme::Basic;
    const auto* application =
        applicationWith(isBasic ? authorization.user : valueOf(form, "client_id"));
    const auto secret = isBasic ? authorization.secret : valueOf(form, "client_secret");
    if (application == nullptr || application->clientSecret != secret) {
        return tokenRefusal(request, Problem::WrongClient);
    }
    const auto grantType = valueOf(form, "grant_type");
    const bool isRefresh = grantType == "refresh_token";
    if (!isRefresh && grantType != "authorization_code") {
        return tokenRefusal(request, Problem::WrongGrantType);
    }
    auto grant =
        isRefresh ? grants_.take(OAuthGrant::Kind::RefreshToken, valueOf(form, "refresh_token"),
                                 settings_.clock())
                  : grants_.take(OAuthGrant::Kind::Code, valueOf(form, "code"), settings_.clock());
    if (!grant || grant->clientId != application->clientId) {
        return tokenRefusal(request, isRefresh ? Problem::WrongRefreshToken : Problem::WrongCode);
    }
    if (!isRefresh && grant->redirectURL && *grant->redirectURL != valueOf(form, "redirect_uri")) {
        return tokenRefusal(request, Problem::WrongRedirect);
    }
    return issue(request, *application, *std::move(grant), isRefresh);
}

Answer OAuthService::issue(const Request& request, const OAuthApplication& application,
                           OAuthGrant grant, bool isRefresh) {
    const auto now = settings_.clock();
    const bool ends = expires(application);
    Issued issued;
    issued.token = grants_.makeSecret(provider_.tokenPrefix);
    issued.scopes = grant.scopes;
    issued.isRefresh = isRefresh;
    Token token{.value = issued.token, .scopes = grant.scopes};
    if (ends) {
        token.expires = now + provider_.tokenLifetime;
        issued.refreshToken = grants_.makeSecret(provider_.refreshTokenPrefix);
    }
    settings_.accounts.issue(grant.login, std::move(token));
    if (ends) {
        grant.kind = OAuthGrant::Kind::RefreshToken;
        grants_.keep(*issued.refreshToken, std::move(grant), now + provider_.refreshTokenLifetime);
    }
    return tokenAnswer(request, issued);
}

}  // namespace emulator
