// What the errors of the sign-in say when its secrets are planted.

#include <functional>
#include <nlohmann/json.hpp>
#include <ostream>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "KorvoGitService/RKTException.h"
#include "KorvoGitService/RKTGitHubService.h"
#include "tests/helpers/MainThread.h"
#include "tests/helpers/Services.h"
#include "tests/helpers/SignIn.h"
#include "tests/security/Planted.h"

namespace {

using emulator::Answer;
using testing::HasSubstr;

std::string percentEncoded(const std::string& text) {
    std::string encoded;
    for (const char c : text) {
        encoded += c == ' ' ? "%20" : c == '%' ? "%25" : c == '/' ? "%2F" : std::string(1, c);
    }
    return encoded;
}

class ErrorsOfTheSignIn : public testing::Test {
protected:
    ErrorsOfTheSignIn() {
        RKTMainQueue::setExecutor({});
        auto settings = RKTNetworkSettings::shared();
        settings.timeoutIntervalForRequest = std::chrono::milliseconds(100);
        settings.maximumBodySize = std::size_t{1} << 20;
        RKTNetworkSettings::setShared(settings);
    }

    /// For answers that must be read, however busy the machine is.
    static void takeTheUsualTime() {
        auto settings = RKTNetworkSettings::shared();
        settings.timeoutIntervalForRequest = RKTNetworkSettings().timeoutIntervalForRequest;
        RKTNetworkSettings::setShared(settings);
    }

    std::shared_ptr<RKTServiceCredentials> credentials = planted::in(filledSignIn());
    const RKTServiceClass& gitHub = *RKTGitHubService::serviceClass();

    std::optional<RKTError> update(bool isRefresh) {
        std::optional<std::optional<RKTError>> outcome;
        gitHub.updateOAuth2AccessTokenWithCredentials(
            credentials, isRefresh,
            [&](std::optional<RKTError> error) { outcome = std::move(error); });
        EXPECT_TRUE(runMainQueueUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(std::nullopt);
    }
    /// Both kinds of update fail, and tell nothing; the last error, to be looked at further.
    RKTError failedSilently() {
        const auto exchange = update(false);
        const auto refresh = update(true);
        if (!exchange || !refresh) throw std::runtime_error("the update did not fail");
        planted::expectNothingTold(*exchange);
        planted::expectNothingTold(*refresh);
        return *refresh;
    }
    void answerWith(unsigned status, const std::string& contentType, const std::string& body) {
        Answer answer{.status = status, .body = body};
        answer.headers.add("Content-Type", contentType);
        origin.server.clearScripts();
        origin.server.script({}, answer);
    }
    /// What was sent, as it is and as it was encoded.
    static std::string echo() {
        return planted::code + " and " + planted::clientSecret + " and " +
               percentEncoded(planted::clientSecret) + " and " + planted::token + " and " +
               planted::refreshToken;
    }

    SharedOrigin origin;
};

TEST_F(ErrorsOfTheSignIn, TellNoSecretThatAJSONAnswerRepeats) {
    takeTheUsualTime();
    for (const unsigned status : {200U, 400U, 401U, 500U}) {
        answerWith(
            status, "application/json; charset=utf-8",
            nlohmann::json({{"error", "invalid_request"},
                            {"error_description", "Wrong: " + echo()},
                            {"error_uri", "https://help/" + percentEncoded(planted::clientSecret) +
                                              planted::code}})
                .dump());
        const RKTError error = failedSilently();
        EXPECT_EQ(error.code(), RKTServiceErrorOAuth2InvalidRequest);
        EXPECT_THAT(error.localizedDescription(), HasSubstr("Wrong: *** and *** and *** and"));
        EXPECT_TRUE(error.URL().has_value());
    }
}

TEST_F(ErrorsOfTheSignIn, TellNoSecretThatAFormRepeats) {
    takeTheUsualTime();
    for (const unsigned status : {200U, 400U, 401U, 500U}) {
        answerWith(status, "application/x-www-form-urlencoded",
                   "error=access_denied&error_description=" + echo() + "&error_uri=https://help/" +
                       percentEncoded(planted::clientSecret));
        const RKTError error = failedSilently();
        EXPECT_EQ(error.code(), RKTServiceErrorOAuth2AccessDenied);
        EXPECT_EQ(error.URL(), RKTURL::URLWithString("https://help/***"));
    }
}

TEST_F(ErrorsOfTheSignIn, TellNoSecretOfAnAnswerThatCannotBeRead) {
    for (const char* contentType : {"application/json", "text/html", "", "planted-type"}) {
        for (const char* before : {"", "{\"access_token\":\"", "[\"", "<html>"}) {
            answerWith(200, contentType, before + echo());
            failedSilently();
        }
    }
}

TEST_F(ErrorsOfTheSignIn, TellNoSecretWhenTheTransferFails) {
    for (const auto& name : emulator::faults::names()) {
        const bool takesLong = name.starts_with("delay") || name == "gzip-bomb";
        // The last one would leave its cookie in the session that all sign-ins share.
        if (takesLong || name == "redirect-to-host" || name == "set-cookie") continue;
        SCOPED_TRACE(name);
        answerWith(400, "text/plain", echo());
        origin.server.fault({}, emulator::faults::named(name).value());
        failedSilently();
    }
}

TEST_F(ErrorsOfTheSignIn, TellNoSecretWithWhichARedirectLeadsOn) {
    for (const std::string& location :
         {"https://github.com/" + planted::code + "/on", "https://" + planted::code + ".invalid/",
          "http://github.com/" + planted::code}) {
        answerWith(302, "text/plain", "");
        origin.server.clearScripts();
        Answer redirect{.status = 302};
        redirect.headers.add("Location", location);
        origin.server.script({.path = "/" + planted::code + "/on"}, emulator::RawAnswer().reset());
        origin.server.script({}, redirect);
        failedSilently();
    }
}

TEST_F(ErrorsOfTheSignIn, TellNoSecretOfATooLargeBodyOrAnUnsafeConnection) {
    takeTheUsualTime();
    std::string body;
    while (body.size() <= std::size_t{1} << 20) body += echo();
    answerWith(200, "application/json", body);
    EXPECT_EQ(failedSilently().code(), RKTError::NSURLErrorDataLengthExceedsMaximum);
    origin.server.presentCertificate(emulator::Leaf::Expired);
    EXPECT_EQ(failedSilently().code(), RKTError::NSURLErrorServerCertificateHasBadDate);
    origin.server.stop();
    EXPECT_EQ(failedSilently().code(), RKTError::NSURLErrorCannotConnectToHost);
}

TEST_F(ErrorsOfTheSignIn, TellNoSecretThatTheRedirectOfTheBrowserRepeats) {
    const std::string echoed = percentEncoded(echo());
    for (const std::string& query :
         {"state=a-state&error=access_denied&error_description=" + echoed + "&error_uri=" +
              percentEncoded("https://help/" + percentEncoded(planted::clientSecret)),
          std::string(
              "state=a-state&code=planted-new-code&error=x&error_description=planted-new-code"),
          "state=forged&code=planted-new-code&error_description=" + echoed, "code=" + planted::code,
          "error=" + echoed}) {
        std::optional<RKTError> error;
        EXPECT_FALSE(gitHub.updateCredentials(
            *credentials, RKTURL::URLWithString("myapp://oauth/callback?" + query).value(),
            &error));
        ASSERT_TRUE(error.has_value()) << query;
        planted::expectNothingTold(*error);
    }
}

template <class Operation>
std::string misuseOf(const Operation& operation) {
    try {
        operation();
    } catch (const RKTInvalidArgumentException& exception) {
        return exception.what();
    }
    throw std::runtime_error("no misuse");
}

TEST_F(ErrorsOfTheSignIn, AreFixedTextsWhenTheyAreMisuse) {
    const auto& base = *RKTService::serviceClass();
    const auto& gitLab = *RKTService::classForServiceType("GitLab");
    const auto url = RKTURL::URLWithString("myapp://x?code=" + planted::code).value();
    const RKTHTTPURLResponse response(url, 200, {});
    std::optional<RKTError> error;
    const std::vector<std::function<void()>> misuses = {
        [&] { base.OAuth2AuthorizeURLForCredentials(*credentials); },
        [&] { base.OAuth2AccessTokenRequestForCredentials(*credentials, false); },
        [&] { base.updateCredentials(*credentials, url, &error); },
        [&] { base.updateCredentials(*credentials, response, planted::token, &error); },
        [&] { base.updateOAuth2AccessTokenWithCredentials(credentials, false, nullptr); },
        [&] { base.OAuth2AuthorizeEndpointForCredentials(*credentials); },
        [&] { gitLab.OAuth2AuthorizeURLForCredentials(*credentials); },
        [&] { gitLab.OAuth2AccessTokenRequestForCredentials(*credentials, true); },
        [&] { gitLab.updateOAuth2AccessTokenWithCredentials(credentials, true, nullptr); },
        [&] {
            credentials->setServiceType("AzureDevOps");
            serviceWith(credentials)->validateCredentialsWithCompletionHandler(nullptr);
        },
        [&] { serviceWith(credentials)->fetchRepositoriesWithRequest(nullptr, nullptr); },
    };
    for (const auto& misuse : misuses) planted::expectNothingTold(misuseOf(misuse));
}

template <class Value>
concept Printable = requires(std::ostream& stream, const Value& value) { stream << value; };
template <class Value>
concept Describable = requires(const Value& value) { value.description(); };

// What cannot be printed ends in no log by accident.
static_assert(!Printable<RKTServiceCredentials> && !Describable<RKTServiceCredentials>);
static_assert(!Printable<RKTURLRequest> && !Describable<RKTURLRequest>);
static_assert(!Printable<RKTService> && !Describable<RKTService>);
static_assert(!Printable<RKTURLSessionDataTask> && !Describable<RKTURLSessionDataTask>);
static_assert(!Printable<RKTNetworkSettings> && !Describable<RKTNetworkSettings>);

}  // namespace
