#include "KorvoGitService/KorvoGitServiceErrors.h"

#include <gtest/gtest.h>

namespace {

// Programs store and compare these, so they stay for good.
TEST(KorvoGitServiceErrors, HaveTheirFixedNumbers) {
    EXPECT_STREQ(RKTKorvoGitServiceErrorDomain, "RKTKorvoGitServiceErrorDomain");
    EXPECT_EQ(RKTServiceErrorUnauthorized, 1001);
    EXPECT_EQ(RKTServiceErrorOAuth2Unknown, 2000);
    EXPECT_EQ(RKTServiceErrorOAuth2InvalidRequest, 2001);
    EXPECT_EQ(RKTServiceErrorOAuth2UnauthorizedClient, 2002);
    EXPECT_EQ(RKTServiceErrorOAuth2AccessDenied, 2003);
    EXPECT_EQ(RKTServiceErrorOAuth2UnsupportedResponseType, 2004);
    EXPECT_EQ(RKTServiceErrorOAuth2InvalidScope, 2005);
    EXPECT_EQ(RKTServiceErrorOAuth2ServerError, 2006);
    EXPECT_EQ(RKTServiceErrorOAuth2TemporarilyUnavailable, 2007);
    EXPECT_EQ(RKTServiceErrorOAuth2InvalidResponse, 2098);
    EXPECT_EQ(RKTServiceErrorOAuth2StateMismatch, 2099);
}

}  // namespace
