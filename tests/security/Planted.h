// Secrets that can be found again, and where to look for them.

#pragma once

#include <KorvoGitService/RKTServiceCredentials.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "KorvoGitService/RKTError.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace planted {

// All begin alike, so that one look finds any of them, a part of one too.
inline const std::string token = "planted-token-7f3a";
inline const std::string refreshToken = "planted-refresh-token-5b1c";
inline const std::string clientSecret = "planted-client-secret 9d/2e";
inline const std::string code = "planted-code-4c8b";
inline const std::string password = "planted-password-1e6f";
inline const std::string user = "octavia";

/// The record with all of its secrets planted.
inline std::shared_ptr<RKTServiceCredentials> in(
    std::shared_ptr<RKTServiceCredentials> credentials) {
    credentials->setUser(user);
    credentials->setToken(token);
    credentials->setRefreshToken(refreshToken);
    credentials->setOAuthClientSecret(clientSecret);
    credentials->setOAuthCode(code);
    return credentials;
}

/// What a secret looks like on its way and in texts.
inline std::vector<std::string> forms() {
    return {"planted", emulator::base64(user + ":" + token),
            emulator::base64(emulator::ForwardProxy::user() + ":" + password)};
}

inline void expectNothingTold(const std::string& text) {
    for (const auto& form : forms()) EXPECT_THAT(text, testing::Not(testing::HasSubstr(form)));
}

/// All that an error can say, a line each.
inline std::string everythingIn(const RKTError& error) {
    std::string all = error.domain() + "\n" + std::to_string(error.code()) + "\n" +
                      error.localizedDescription() + "\n" +
                      error.localizedRecoverySuggestion().value_or("") + "\n";
    if (const auto url = error.URL()) all += url->absoluteString() + "\n";
    for (const auto& [key, value] : error.userInfo()) {
        all += key + "=";
        if (const auto* text = std::get_if<std::string>(&value)) all += *text;
        if (const auto* url = std::get_if<RKTURL>(&value)) all += url->absoluteString();
        if (const auto* number = std::get_if<RKTNumber>(&value)) all += number->stringValue();
        all += "\n";
    }
    return all;
}

inline void expectNothingTold(const RKTError& error) {
    expectNothingTold(everythingIn(error));
}

}  // namespace planted
