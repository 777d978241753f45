// Answers that real providers gave to token requests, served again.
//
// tests/data/samples/oauth/NAME.body is the body as served; NAME.meta.json holds the status and
// headers that went with it, the record that it answers, and what is expected.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "KorvoGitService/RKTService.h"
#include "tests/helpers/Loading.h"
#include "tests/helpers/MainThread.h"

namespace {

using nlohmann::json;

const std::filesystem::path folder = TEST_DATA_DIR "/samples/oauth";

std::string content(const std::string& file) {
    std::ifstream stream(folder / file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".body") found.push_back(entry.path().stem());
    }
    std::ranges::sort(found);
    return found;
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::ranges::replace_if(name, [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

std::shared_ptr<RKTServiceCredentials> record(const json& properties) {
    auto credentials = std::make_shared<RKTServiceCredentials>("GitHub", "OAuth2");
    credentials->setOAuthCode(properties.at("OAuthCode"));
    credentials->setOAuthClientID(properties.at("OAuthClientID"));
    credentials->setOAuthClientSecret(properties.at("OAuthClientSecret"));
    credentials->setOAuthRedirectURL(
        RKTURL::URLWithString(properties.at("OAuthRedirectURL").get<std::string>()));
    credentials->setToken(properties.at("token"));
    credentials->setRefreshToken(properties.at("refreshToken"));
    return credentials;
}

json value(const std::optional<std::string>& text) {
    return text ? json(*text) : json();
}

void expectRequest(const emulator::Request& request, const json& expected) {
    EXPECT_EQ(json(request.method), expected.at("method"));
    EXPECT_EQ(json(request.tls), expected.at("tls"));
    EXPECT_EQ(json(request.authority), expected.at("authority"));
    EXPECT_EQ(json(request.target), expected.at("path"));
    EXPECT_EQ(value(request.headers.get("Content-Type")),
              expected.at("headers").at("Content-Type"));
    EXPECT_EQ(request.headers.get("Authorization"), std::nullopt);
    EXPECT_EQ(request.headers.get("Accept"), std::nullopt);
    std::vector<std::string> pieces;
    for (const auto& item : emulator::parseQuery(request.body)) {
        pieces.push_back(item.name + "=" + item.value);
    }
    std::ranges::sort(pieces);
    EXPECT_EQ(json(pieces), expected.at("form"));
}

void expectError(const RKTError& error, const json& expected) {
    EXPECT_EQ(json(error.domain()), expected.at("domain"));
    EXPECT_EQ(json(error.code()), expected.at("code"));
    EXPECT_EQ(json(error.localizedDescription()), expected.at("description"));
    EXPECT_EQ(error.localizedRecoverySuggestion(), std::nullopt);
    EXPECT_EQ(error.URL() ? json(error.URL()->absoluteString()) : json(), expected.at("url"));
}

void expectTokens(const RKTServiceCredentials& credentials, const json& expected,
                  std::chrono::system_clock::time_point started) {
    EXPECT_EQ(value(credentials.token()), expected.at("token"));
    EXPECT_EQ(value(credentials.refreshToken()), expected.at("refreshToken"));
    const auto expiry = credentials.expiryDate().value();
    if (expected.at("expiry") == "distantFuture") {
        EXPECT_EQ(expiry, RKTDateDistantFuture());
        return;
    }
    const auto read = expiry - std::chrono::seconds(expected.at("expiry").at("offset").get<int>());
    EXPECT_GE(read, std::chrono::floor<RKTDate::duration>(started));
    EXPECT_LE(read, std::chrono::system_clock::now());
}

class RecordedTokenAnswer : public testing::TestWithParam<std::string> {
protected:
    RecordedTokenAnswer() { RKTNetworkSettings::setShared(origin.settings); }
    ~RecordedTokenAnswer() override { RKTNetworkSettings::setShared({}); }

    Origin origin;
};

TEST_P(RecordedTokenAnswer, IsAskedForAndReadAsExpected) {
    const json sample = json::parse(content(GetParam() + ".meta.json"));
    const json& asked = sample.at("request");
    const json& expected = sample.at("expect").at("outcome");
    emulator::Answer answer;
    answer.status = sample.at("status");
    for (const auto& header : sample.at("headers")) answer.headers.add(header[0], header[1]);
    answer.body = content(GetParam() + ".body");
    origin.server.script({}, answer);

    const auto credentials = record(asked.at("credentials"));
    const auto before = credentials->copyWithZone();
    const auto started = std::chrono::system_clock::now();
    std::optional<RKTError> error;
    bool ended = false;
    RKTService::classForServiceType("GitHub")->updateOAuth2AccessTokenWithCredentials(
        credentials, asked.at("isRefresh"), [&](std::optional<RKTError> reason) {
            error = std::move(reason);
            ended = true;
        });
    ASSERT_TRUE(runMainQueueUntil([&] { return ended; }));

    const auto requests = origin.server.requests();
    ASSERT_EQ(requests.size(), 1U);
    expectRequest(requests[0], sample.at("expect").at("request"));
    ASSERT_EQ(error.has_value(), !expected.at("error").is_null());
    if (error) {
        expectError(*error, expected.at("error"));
        EXPECT_EQ(credentials->token(), before->token());
        EXPECT_EQ(credentials->refreshToken(), before->refreshToken());
        EXPECT_EQ(credentials->expiryDate(), before->expiryDate());
    } else {
        expectTokens(*credentials, expected, started);
    }
}

INSTANTIATE_TEST_SUITE_P(OAuth2, RecordedTokenAnswer, testing::ValuesIn(names()), testName);

}  // namespace
