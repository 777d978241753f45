#include "KorvoGitService/RKTError.h"

#include <utility>

#include "support/LibraryBundle.h"

constinit const char* const RKTError::NSLocalizedDescriptionKey = "NSLocalizedDescription";
constinit const char* const RKTError::NSLocalizedRecoverySuggestionErrorKey =
    "NSLocalizedRecoverySuggestion";
constinit const char* const RKTError::NSURLErrorKey = "NSURL";
constinit const char* const RKTError::NSURLErrorFailingURLStringErrorKey =
    "NSErrorFailingURLStringKey";
constinit const char* const RKTError::RKTUnderlyingCodeKey = "RKTUnderlyingCode";
constinit const char* const RKTError::RKTUnderlyingTextKey = "RKTUnderlyingText";
constinit const char* const RKTError::NSJSONSerializationErrorIndex =
    "NSJSONSerializationErrorIndex";

constinit const char* const RKTError::NSURLErrorDomain = "NSURLErrorDomain";
constinit const char* const RKTError::NSCocoaErrorDomain = "NSCocoaErrorDomain";

struct RKTError::Content {
    std::string domain;
    std::int64_t code;
    UserInfo userInfo;

    bool operator==(const Content&) const = default;
};

namespace {

/// Nothing when the key is absent or its value is of another type.
template <class T>
std::optional<T> valueForKey(const RKTError::UserInfo& userInfo, std::string_view key) {
    const auto place = userInfo.find(key);
    const auto* value = place == userInfo.end() ? nullptr : std::get_if<T>(&place->second);
    return value ? std::optional(*value) : std::nullopt;
}

}  // namespace

RKTError::RKTError(std::string domain, std::int64_t code, UserInfo userInfo)
    : content_(
          std::make_shared<const Content>(Content{std::move(domain), code, std::move(userInfo)})) {}

const std::string& RKTError::domain() const {
    return content_->domain;
}

std::int64_t RKTError::code() const {
    return content_->code;
}

const RKTError::UserInfo& RKTError::userInfo() const {
    return content_->userInfo;
}

std::string RKTError::localizedDescription() const {
    auto text = valueForKey<std::string>(userInfo(), NSLocalizedDescriptionKey);
    if (text && !text->empty()) {
        return *std::move(text);
    }
    return rkt::localized("The operation could not be completed.") + " (" + domain() + " " +
           std::to_string(code()) + ")";
}

std::optional<std::string> RKTError::localizedRecoverySuggestion() const {
    return valueForKey<std::string>(userInfo(), NSLocalizedRecoverySuggestionErrorKey);
}

std::optional<RKTURL> RKTError::URL() const {
    return valueForKey<RKTURL>(userInfo(), NSURLErrorKey);
}

bool RKTError::operator==(const RKTError& other) const {
    return content_ == other.content_ || *content_ == *other.content_;
}
