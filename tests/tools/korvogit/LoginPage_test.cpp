#include "tools/korvogit/LoginPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;

TEST(KorvogitLoginPage, ShowsWhatItIsGivenAsText) {
    const auto page = korvogit::loginPage(false, "<b>&", "<script>");
    EXPECT_THAT(page, HasSubstr("<title>Not signed in to &lt;b&gt;&amp;</title>"));
    EXPECT_THAT(page, HasSubstr("Not signed in to &lt;b&gt;&amp;</h1>"));
    EXPECT_THAT(page, HasSubstr("<p>&lt;script&gt;</p>"));
    EXPECT_THAT(page, Not(HasSubstr("<b>")));
    EXPECT_THAT(page, Not(HasSubstr("<script")));
}

TEST(KorvogitLoginPage, TellsASignInThatWorkedFromOneThatDidNot) {
    const auto page = korvogit::loginPage(true, "GitHub", "Go on.");
    EXPECT_THAT(page, HasSubstr("<title>Signed in to GitHub</title>"));
    EXPECT_THAT(page, Not(HasSubstr("Not signed in")));
}

}  // namespace
