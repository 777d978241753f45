#include "service/OAuth2TokenAnswer.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/RKTJSON.h"
#include "service/OAuth2Error.h"
#include "support/Percent.h"
#include "support/Text.h"

namespace rkt {

namespace {

using Members = RKTServiceClass::OAuth2ResponseObject;

// What both kinds of answer come to.
struct Answer {
    Members texts;
    std::optional<std::int64_t> expiresIn;  // seconds
};

std::variant<Answer, RKTError> readJSON(std::string_view body) {
    std::optional<RKTError> parseError;
    const auto document = RKTJSONSerialization::JSONObjectWithData(body, &parseError);
    if (!document) return *std::move(parseError);
    const auto object = document->root().dictionary();
    if (!object) return invalidTokenAnswer();

    Answer answer;
    for (const char* const name :
         {"error", "error_description", "error_uri", "access_token", "refresh_token"}) {
        const auto text = kc_objectOfClass<std::string_view>(*object, name);
        if (text) answer.texts.emplace(name, *text);
    }
    const auto expiresIn = kc_objectOfClass<RKTNumber>(*object, "expires_in");
    if (expiresIn) answer.expiresIn = expiresIn->integerValue();
    return answer;
}

// Takes the text up to the separator off the beginning, and the separator too.
std::string_view takePiece(std::string_view& text, char separator) {
    const auto piece = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(piece.size() + 1, text.size()));
    return piece;
}

// Nothing is decoded: the values are taken as they stand.
Answer readForm(std::string_view body) {
    Answer answer;
    if (!isUTF8(body)) return answer;
    while (!body.empty()) {
        auto value = takePiece(body, '&');
        const bool hasValue = value.find('=') != std::string_view::npos;
        std::string key(takePiece(value, '='));
        if (hasValue) {
            answer.texts.insert_or_assign(std::move(key), takePiece(value, '='));
        } else {
            answer.texts.erase(key);
        }
    }
    const auto expiresIn = answer.texts.find("expires_in");
    if (expiresIn != answer.texts.end()) answer.expiresIn = integerFromText(expiresIn->second);
    return answer;
}

// Past the ends of the calendar it stands at them.
RKTDate secondsAfter(RKTDate date, std::int64_t seconds) {
    constexpr std::int64_t perSecond = RKTDate::period::den;
    std::int64_t microseconds = 0;
    std::int64_t sum = 0;
    if (__builtin_mul_overflow(seconds, perSecond, &microseconds) ||
        __builtin_add_overflow(date.time_since_epoch().count(), microseconds, &sum)) {
        return seconds < 0 ? RKTDate::min() : RKTDate::max();
    }
    return RKTDate(RKTDate::duration(sum));
}

std::optional<std::string> takeText(Members& texts, std::string_view name) {
    const auto found = texts.find(name);
    return found == texts.end() ? std::nullopt : std::optional(std::move(found->second));
}

}  // namespace

std::variant<OAuth2Tokens, RKTError> readTokenAnswer(const std::optional<std::string>& contentType,
                                                     std::string_view body, RKTDate now) {
    const auto mediaType = contentType.value_or("").substr(0, contentType.value_or("").find(';'));
    std::variant<Answer, RKTError> read = invalidTokenAnswer();
    if (mediaType == "application/json") {
        read = readJSON(body);
    } else if (mediaType == "application/x-www-form-urlencoded") {
        read = readForm(body);
    }
    if (auto* unreadable = std::get_if<RKTError>(&read)) return std::move(*unreadable);

    auto& answer = std::get<Answer>(read);
    if (auto refusal = providerError(answer.texts)) return *std::move(refusal);
    OAuth2Tokens tokens{takeText(answer.texts, "access_token"),
                        takeText(answer.texts, "refresh_token")};
    if (answer.expiresIn) tokens.expiryDate = secondsAfter(now, *answer.expiresIn);
    return tokens;
}

}  // namespace rkt
