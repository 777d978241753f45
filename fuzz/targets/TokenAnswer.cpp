// Answers to token requests. The input's first line is "Content-Type", the rest the body.

#include "service/OAuth2TokenAnswer.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTGitHubService.h"
#include "fuzz/common/OAuth2.h"
#include "fuzz/common/PlainJSON.h"
#include "fuzz/common/Target.h"

namespace {

namespace plain = fuzz::plain;
using fuzz::require;
using Limits = std::numeric_limits<std::int64_t>;

constexpr RKTDate now = RKTDate(std::chrono::seconds(1'700'000'000));

struct Answer {
    plain::Dictionary texts;
    std::optional<std::int64_t> expiresIn;
};

/// What is expected: an answer, or the code of the error that stands for what is none.
using Reading = std::variant<Answer, std::int64_t>;

std::int64_t truncated(const RKTNumber& number) {
    if (number.type() != RKTNumber::Type::Floating) return number.integerValue();
    const double value = std::trunc(number.doubleValue());
    if (value >= 0x1p63) return Limits::max();
    return value <= -0x1p63 ? Limits::min() : static_cast<std::int64_t>(value);
}

Reading readJSON(std::string_view body) {
    const auto read = fuzz::readJSONBothWays(body);
    if (!read.expected) return RKTError::NSPropertyListReadCorruptError;
    if (!read.expected->as<plain::JSON::Members>()) return RKTServiceErrorOAuth2InvalidResponse;
    Answer answer;
    for (const char* name :
         {"access_token", "refresh_token", "error", "error_description", "error_uri"}) {
        if (auto text = read.expected->get<std::string>(name)) answer.texts[name] = *text;
    }
    if (const auto number = read.expected->get<RKTNumber>("expires_in")) {
        answer.expiresIn = truncated(*number);
    }
    return answer;
}

Reading readForm(std::string_view body) {
    Answer answer;
    if (!plain::isUTF8(body)) return answer;
    for (const auto piece : plain::split(body, '&')) {
        const auto parts = plain::split(piece, '=');
        answer.texts.erase(std::string(parts[0]));
        if (parts.size() > 1) answer.texts.emplace(parts[0], parts[1]);
    }
    const auto expiresIn = answer.texts.find("expires_in");
    if (expiresIn != answer.texts.end()) answer.expiresIn = plain::integerIn(expiresIn->second);
    return answer;
}

Reading readPlainly(std::string_view contentType, std::string_view body) {
    const auto mediaType = plain::split(contentType, ';').front();
    if (mediaType == "application/json") return readJSON(body);
    if (mediaType == "application/x-www-form-urlencoded") return readForm(body);
    return RKTServiceErrorOAuth2InvalidResponse;
}

std::optional<std::string> textIn(const plain::Dictionary& texts, const char* name) {
    const auto found = texts.find(name);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}

/// Nothing stands for the distant future. Past the calendar's ends it stands at them.
RKTDate expected(const std::optional<std::int64_t>& expiresIn) {
    if (!expiresIn) return RKTDateDistantFuture();
    constexpr std::int64_t perSecond = 1'000'000;
    const std::int64_t start = now.time_since_epoch().count();
    if (*expiresIn > (Limits::max() - start) / perSecond) return RKTDate::max();
    if (*expiresIn < Limits::min() / perSecond) return RKTDate::min();
    return now + std::chrono::seconds(*expiresIn);
}

void checkTokens(const rkt::OAuth2Tokens& tokens, const Answer& answer) {
    require(tokens.token == textIn(answer.texts, "access_token"), "the token");
    require(tokens.refreshToken == textIn(answer.texts, "refresh_token"), "the refresh token");
    require(tokens.expiryDate == expected(answer.expiresIn), "the expiry date");
}

/// The same through the public operation, which changes all or nothing.
void checkUpdate(std::string_view contentType, std::string_view body,
                 const std::variant<rkt::OAuth2Tokens, RKTError>& read) {
    RKTServiceCredentials credentials("GitHub", "OAuth2");
    credentials.setToken("old");
    credentials.setRefreshToken("older");
    const RKTHTTPURLResponse response({}, 200, {{"Content-Type", std::string(contentType)}});
    std::optional<RKTError> error;
    const bool success =
        RKTGitHubService::serviceClass()->updateCredentials(credentials, response, body, &error);
    const auto* tokens = std::get_if<rkt::OAuth2Tokens>(&read);
    require(success == (tokens != nullptr) && success == !error, "an update or an error");
    require(credentials.token() == (success ? tokens->token : "old"), "the token is updated");
    require(credentials.refreshToken() == (success ? tokens->refreshToken : "older"),
            "the refresh token is updated");
    require(credentials.expiryDate().has_value() == success, "the expiry date is updated");
    if (error) require(*error == std::get<RKTError>(read), "the error");
}

}  // namespace

FUZZ_TARGET(TokenAnswer) {
    const auto contentType = fuzz::takeLine(input);
    const auto read = rkt::readTokenAnswer(std::string(contentType), input, now);
    checkUpdate(contentType, input, read);

    const auto reading = readPlainly(contentType, input);
    const auto* error = std::get_if<RKTError>(&read);
    if (const auto* code = std::get_if<std::int64_t>(&reading)) {
        require(error && error->code() == *code, "what cannot be read");
        return;
    }
    const auto& answer = std::get<Answer>(reading);
    const auto refusal = fuzz::expectedOAuth2Error(answer.texts);
    require(refusal.has_value() == (error != nullptr), "the provider's error is one");
    if (error) {
        require(*error == *refusal, "what the provider's error says");
    } else {
        checkTokens(std::get<rkt::OAuth2Tokens>(read), answer);
    }
}
