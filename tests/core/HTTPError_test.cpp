#include "core/HTTPError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "tests/helpers/StringsTable.h"

namespace {

using testing::Optional;

RKTError errorWithBody(int status, std::string_view body) {
    const auto document = RKTJSONSerialization::JSONObjectWithData(body);
    return rkt::errorWithHTTPStatus(status, document.value().root());
}

TEST(HTTPError, CountsStatusesOutside200To299AsFailures) {
    for (const int status : {0, 100, 199, 300, 304, 401, 404, 500, 999}) {
        EXPECT_TRUE(rkt::isFailureStatus(status)) << status;
    }
    for (const int status : {200, 201, 204, 299}) {
        EXPECT_FALSE(rkt::isFailureStatus(status)) << status;
    }
}

TEST(HTTPError, HasTheStatusAsItsCode) {
    for (const int status : {199, 300, 400, 403, 404, 422, 429, 500, 502, 599}) {
        const auto error = rkt::errorWithHTTPStatus(status, std::nullopt);
        EXPECT_EQ(error.domain(), RKTKorvoGitServiceErrorDomain);
        EXPECT_EQ(error.code(), status);
    }
}

TEST(HTTPError, HasACodeOfItsOwnForUnauthorized) {
    EXPECT_EQ(rkt::errorWithHTTPStatus(401, std::nullopt).code(), RKTServiceErrorUnauthorized);
}

TEST(HTTPError, CapitalizesTheTranslationToo) {
    const rkt::tests::Language language("de");
    EXPECT_EQ(rkt::errorWithHTTPStatus(404, std::nullopt).localizedDescription(), "Nicht Gefunden");
    EXPECT_EQ(rkt::errorWithHTTPStatus(429, std::nullopt).localizedDescription(),
              "Zu Viele Anfragen");
}

TEST(HTTPError, DescribesTheStatusInCapitalizedWords) {
    EXPECT_EQ(rkt::errorWithHTTPStatus(404, std::nullopt).localizedDescription(), "Not Found");
    EXPECT_EQ(rkt::errorWithHTTPStatus(422, std::nullopt).localizedDescription(),
              "Unprocessable Content");
    EXPECT_EQ(rkt::errorWithHTTPStatus(414, std::nullopt).localizedDescription(), "Uri Too Long");
    EXPECT_EQ(rkt::errorWithHTTPStatus(599, std::nullopt).localizedDescription(), "Server Error");
}

TEST(HTTPError, SuggestsWhatTheServiceSays) {
    EXPECT_THAT(
        errorWithBody(401, R"({"message": "Bad credentials"})").localizedRecoverySuggestion(),
        Optional(std::string("Bad credentials")));
    EXPECT_THAT(errorWithBody(422, R"({"message": ""})").localizedRecoverySuggestion(),
                Optional(std::string()));
}

TEST(HTTPError, SuggestsNothingWithoutAMessageOfText) {
    for (const char* body :
         {"{}", "[]", R"(["message"])", R"([{"message": "x"}])", R"({"message": null})",
          R"({"message": 1})", R"({"message": {"field": ["x"]}})", R"({"Message": "x"})"}) {
        const auto error = errorWithBody(400, body);
        EXPECT_EQ(error.localizedRecoverySuggestion(), std::nullopt) << body;
        EXPECT_FALSE(error.userInfo().contains(RKTError::NSLocalizedRecoverySuggestionErrorKey))
            << body;
    }
    EXPECT_EQ(rkt::errorWithHTTPStatus(400, std::nullopt).localizedRecoverySuggestion(),
              std::nullopt);
}

}  // namespace
