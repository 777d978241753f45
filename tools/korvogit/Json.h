// The library's values as JSON. What is nothing in the library is null here, never absent.

#pragma once

#include <KorvoGitService/RKTDate.h>
#include <KorvoGitService/RKTError.h>
#include <KorvoGitService/RKTNumber.h>
#include <KorvoGitService/RKTServiceCredentials.h>
#include <KorvoGitService/RKTServiceRequest.h>
#include <KorvoGitService/RKTURL.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace korvogit {

using Json = nlohmann::ordered_json;

inline Json toJson(const std::string& text) {
    return text;
}
inline Json toJson(const RKTURL& url) {
    return url.absoluteString();
}
/// A boolean stays one, an integer is exact, a floating-point number reads back as the same number.
Json toJson(const RKTNumber& number);
/// Seconds since 1970: a whole number when it is one.
Json toJson(RKTDate date);
Json toJson(const RKTError& error);
/// All thirteen properties, the secrets too.
Json toJson(const RKTServiceCredentials& credentials);
Json toJson(const RKTServiceRepository& repository);
Json toJson(const RKTServiceResult::LinkRelations& relations);
Json toJson(const RKTServiceArrayResult::Results& results);

inline Json toJson(const std::vector<std::string>& texts) {
    return texts;
}

template <class T>
Json toJson(const std::optional<T>& value) {
    return value ? toJson(*value) : Json();
}

/// As text to print: UTF-8, indented, nothing in it steers a terminal, whatever a service put in.
std::string jsonText(const Json& json);
/// The same as one line (https://jsonlines.org).
std::string jsonLine(const Json& json);

}  // namespace korvogit
