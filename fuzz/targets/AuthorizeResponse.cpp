// The URL that brings a sign-in's user back. The input's first line is the state that was sent, "-"
// for none; the rest is the URL.

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTGitHubService.h"
#include "fuzz/common/OAuth2.h"
#include "fuzz/common/Target.h"

namespace {

namespace plain = fuzz::plain;
using fuzz::require;

std::optional<std::string> valueOf(const plain::Dictionary& answer, const char* name) {
    const auto found = answer.find(name);
    return found == answer.end() ? std::nullopt : std::optional(found->second);
}

/// What the provider says, but not the code, which may stand in there again. A short one is told:
/// it stands in texts by chance.
std::optional<RKTError> expectedError(const plain::Dictionary& answer) {
    const auto error = fuzz::expectedOAuth2Error(answer);
    const auto code = valueOf(answer, "code");
    return error && code && code->size() >= 8 ? fuzz::withoutSecret(*error, *code) : error;
}

/// A URL that cannot be taken apart says nothing.
plain::Dictionary readPlainly(const RKTURL& url) {
    if (!RKTURLComponents::componentsWithURL(url)) return {};
    return plain::folded(
        plain::queryItems(plain::queryOf(url.absoluteString()).value_or(std::string_view())));
}

}  // namespace

FUZZ_TARGET(AuthorizeResponse) {
    const auto state = fuzz::takeLine(input);
    const auto url = RKTURL::URLWithString(input);
    if (!url) return;
    RKTServiceCredentials credentials("GitHub", "OAuth2");
    if (state != "-") credentials.setOAuthState(std::string(state));
    credentials.setOAuthCode("former");
    credentials.setToken("kept");
    std::optional<RKTError> error;
    const bool success =
        RKTGitHubService::serviceClass()->updateCredentials(credentials, *url, &error);

    require(success == !error, "an update or an error");
    require(credentials.token() == "kept", "no other field is touched");
    const auto answer = readPlainly(*url);
    if (state != "-" && valueOf(answer, "state") != state) {
        require(error && error->code() == RKTServiceErrorOAuth2StateMismatch, "the state counts");
    } else if (const auto refusal = expectedError(answer)) {
        require(error == refusal, "what the provider's error says");
    } else {
        require(success, "an answer in order is taken");
    }
    require(credentials.OAuthCode() == (success ? valueOf(answer, "code") : "former"), "the code");
}
