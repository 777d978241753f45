#include "KorvoGitService/RKTError.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "KorvoGitService/RKTException.h"

namespace {

RKTError error(RKTError::UserInfo information = {}) {
    return {"Domain", -7, std::move(information)};
}

TEST(RKTError, KeepsDomainCodeAndInformation) {
    const auto made = error({{"key", std::string("value")}, {"number", RKTNumber(3)}});
    EXPECT_EQ(made.domain(), "Domain");
    EXPECT_EQ(made.code(), -7);
    EXPECT_EQ(made.userInfo().size(), 2u);
    EXPECT_EQ(std::get<std::string>(made.userInfo().at("key")), "value");
    EXPECT_EQ(std::get<RKTNumber>(made.userInfo().at("number")), RKTNumber(3));
}

TEST(RKTError, DescribesItselfByTheTextItWasGiven) {
    const auto made = error({{RKTError::NSLocalizedDescriptionKey, std::string("Not Found")}});
    EXPECT_EQ(made.localizedDescription(), "Not Found");
}

TEST(RKTError, DescribesItselfByDomainAndCodeWithoutText) {
    const std::string fallback = "The operation could not be completed. (Domain -7)";
    EXPECT_EQ(error().localizedDescription(), fallback);
    EXPECT_EQ(error({{RKTError::NSLocalizedDescriptionKey, std::string()}}).localizedDescription(),
              fallback);
    EXPECT_EQ(error({{RKTError::NSLocalizedDescriptionKey, RKTNumber(1)}}).localizedDescription(),
              fallback);
}

TEST(RKTError, HasASuggestionAndAURLOnlyWhenGiven) {
    EXPECT_FALSE(error().localizedRecoverySuggestion());
    EXPECT_FALSE(error().URL());
    const auto url = RKTURL::URLWithString("https://git.example.com/help").value();
    const auto made = error({{RKTError::NSLocalizedRecoverySuggestionErrorKey, std::string("Try.")},
                             {RKTError::NSURLErrorKey, url}});
    EXPECT_EQ(made.localizedRecoverySuggestion(), "Try.");
    EXPECT_EQ(made.URL(), url);
    EXPECT_FALSE(error({{RKTError::NSURLErrorKey, std::string("https://x/")}}).URL());
}

TEST(RKTError, IsEqualWhenAllPartsAre) {
    const RKTError::UserInfo information = {{"key", std::string("value")}};
    const auto made = error(information);
    const auto copy = made;
    EXPECT_EQ(copy, made);
    EXPECT_EQ(made, error(information));
    EXPECT_NE(made, error());
    EXPECT_NE(made, RKTError("Other", -7, information));
    EXPECT_NE(made, RKTError("Domain", 7, information));
}

TEST(RKTError, KeepsTheNamesOfKeysAndDomains) {
    EXPECT_STREQ(RKTError::NSURLErrorDomain, "NSURLErrorDomain");
    EXPECT_STREQ(RKTError::NSCocoaErrorDomain, "NSCocoaErrorDomain");
    EXPECT_STREQ(RKTError::NSLocalizedDescriptionKey, "NSLocalizedDescription");
    EXPECT_STREQ(RKTError::NSLocalizedRecoverySuggestionErrorKey, "NSLocalizedRecoverySuggestion");
    EXPECT_STREQ(RKTError::NSURLErrorKey, "NSURL");
}

TEST(RKTInvalidArgumentException, IsAnInvalidArgumentWithItsReason) {
    try {
        throw RKTInvalidArgumentException("Must be initialized otherwise.");
    } catch (const std::invalid_argument& exception) {
        EXPECT_STREQ(exception.what(), "Must be initialized otherwise.");
    }
}

TEST(RKTInvalidArgumentException, KeepsItsReasonInACopy) {
    RKTInvalidArgumentException copy("one");
    copy = RKTInvalidArgumentException("other");
    const RKTInvalidArgumentException again(copy);
    EXPECT_STREQ(again.what(), "other");
}

}  // namespace
