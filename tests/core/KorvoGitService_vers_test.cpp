#include "KorvoGitService/KorvoGitService_vers.h"

#include <gtest/gtest.h>

namespace {

TEST(KorvoGitServiceVersion, IsFoundInTheBinary) {
    EXPECT_EQ(KorvoGitServiceVersionNumber, 1.0);
    EXPECT_STREQ(reinterpret_cast<const char*>(KorvoGitServiceVersionString),
                 "@(#)PROGRAM:KorvoGitService  PROJECT:KorvoGit-1\n");
}

}  // namespace
