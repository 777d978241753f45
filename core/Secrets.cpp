#include "core/Secrets.h"

#include <algorithm>
#include <utility>

#include "support/Percent.h"
#include "support/RequestTarget.h"
#include "support/Text.h"

namespace rkt {

namespace {

constexpr std::size_t shortestLookedFor = 8;
constexpr std::string_view substitute = "***";

void cutOut(const std::string& secret, std::string& text) {
    for (auto place = text.find(secret); place != std::string::npos;
         place = text.find(secret, place + substitute.size())) {
        text.replace(place, secret.size(), substitute);
    }
}

bool mayHoldSecret(const std::optional<RKTURL>& url) {
    return url && failingURLString(*url).empty();
}

}  // namespace

Secrets::Secrets(const RKTServiceCredentials& credentials)
    : user_(orNull(credentials.user())),
      token_(credentials.token()),
      addressMayHoldOne_(mayHoldSecret(credentials.URL())) {
    add(token_);
    add(credentials.refreshToken());
    add(credentials.OAuthClientSecret());
    add(credentials.OAuthCode());
}

void Secrets::add(std::optional<std::string> secret) {
    if (secret && secret->size() >= shortestLookedFor) secrets_.push_back(*std::move(secret));
}

// The longest first, as one may be the beginning of another.
std::vector<std::string> Secrets::forms() const {
    std::vector<std::string> forms = secrets_;
    for (const auto& secret : secrets_) {
        forms.push_back(formValueEncoded(secret));
        forms.push_back(percentEncode(secret, unreservedCharacters));
    }
    if (token_ && token_->size() >= shortestLookedFor) {
        forms.push_back(base64(user_ + ":" + *token_));
    }
    std::ranges::sort(forms, std::ranges::greater(),
                      [](const std::string& form) { return form.size(); });
    return forms;
}

// An adapter may have taken out of the address what gave it away, so that the error alone does not
// show it.
bool Secrets::mayTell(std::string_view key) const {
    const bool namesAddress = key == RKTError::NSURLErrorFailingURLStringErrorKey ||
                              key == RKTError::RKTUnderlyingTextKey;
    return !addressMayHoldOne_ || !namesAddress;
}

RKTError Secrets::removedFrom(const RKTError& error) const {
    const auto forms = this->forms();
    const auto withoutSecrets = [&forms](std::string text) {
        for (const auto& form : forms) cutOut(form, text);
        return text;
    };
    RKTError::UserInfo userInfo;
    for (const auto& [key, value] : error.userInfo()) {
        if (!mayTell(key)) continue;
        if (const auto* text = std::get_if<std::string>(&value)) {
            userInfo.emplace(key, withoutSecrets(*text));
        } else if (const auto* url = std::get_if<RKTURL>(&value)) {
            auto rest = RKTURL::URLWithString(withoutSecrets(url->absoluteString()));
            if (rest) userInfo.emplace(key, *std::move(rest));
        } else {
            userInfo.emplace(key, value);
        }
    }
    return userInfo == error.userInfo()
               ? error
               : RKTError(error.domain(), error.code(), std::move(userInfo));
}

}  // namespace rkt
