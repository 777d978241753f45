#include "KorvoGitService/KorvoGitServiceBase.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

namespace {

TEST(RKTKorvoGitServiceBundle, IsAlwaysTheSameObject) {
    EXPECT_EQ(&RKTKorvoGitServiceBundle(), &RKTKorvoGitServiceBundle());
}

TEST(RKTKorvoGitServiceBundle, IsTheSameObjectOnEveryThread) {
    std::array<const RKTBundle*, 8> bundles{};
    {
        std::vector<std::jthread> threads;
        for (auto& bundle : bundles) {
            threads.emplace_back([&bundle] { bundle = &RKTKorvoGitServiceBundle(); });
        }
    }
    for (const auto* bundle : bundles) EXPECT_EQ(bundle, &RKTKorvoGitServiceBundle());
}

TEST(RKTServiceLocalizedString, IsTheKeyWithoutATranslation) {
    EXPECT_EQ(RKTServiceLocalizedString("Personal Access Token"), "Personal Access Token");
    EXPECT_EQ(RKTServiceLocalizedString("a text that nobody translated"),
              "a text that nobody translated");
    EXPECT_EQ(RKTServiceLocalizedString(""), "");
}

TEST(RKTServiceLocalizedStringFromTable, IsTheKeyWithoutSuchATable) {
    EXPECT_EQ(RKTServiceLocalizedStringFromTable("Basic Auth", "NoSuchTable"), "Basic Auth");
}

}  // namespace
