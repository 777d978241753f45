#include "KorvoGitService/RKTServiceRepository.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Optional;

TEST(RKTServiceRepository, NamesStatesAndVisibilities) {
    EXPECT_STREQ(RKTServiceRepositoryStateOpen, "open");
    EXPECT_STREQ(RKTServiceRepositoryStateClosed, "closed");
    EXPECT_STREQ(RKTServiceRepositoryVisibilityPublic, "public");
    EXPECT_STREQ(RKTServiceRepositoryVisibilityPrivate, "private");
    EXPECT_STREQ(RKTServiceRepositoryVisibilityInternal, "internal");
}

TEST(RKTServiceRepository, KnowsNothingAtFirst) {
    const RKTServiceRepository repository;
    EXPECT_EQ(repository.identifier(), std::nullopt);
    EXPECT_EQ(repository.name(), std::nullopt);
    EXPECT_EQ(repository.fullName(), std::nullopt);
    EXPECT_EQ(repository.descriptiveText(), std::nullopt);
    EXPECT_EQ(repository.path(), std::nullopt);
    EXPECT_EQ(repository.fullPath(), std::nullopt);
    EXPECT_EQ(repository.ownerIdentifier(), std::nullopt);
    EXPECT_EQ(repository.ownerName(), std::nullopt);
    EXPECT_EQ(repository.state(), std::nullopt);
    EXPECT_EQ(repository.visibility(), std::nullopt);
    EXPECT_EQ(repository.isFork(), std::nullopt);
    EXPECT_EQ(repository.numberOfStars(), std::nullopt);
    EXPECT_EQ(repository.numberOfForks(), std::nullopt);
    EXPECT_EQ(repository.avatarURL(), std::nullopt);
    EXPECT_EQ(repository.webURL(), std::nullopt);
    EXPECT_EQ(repository.SSHRepositoryURL(), std::nullopt);
    EXPECT_EQ(repository.HTTPSRepositoryURL(), std::nullopt);
    EXPECT_EQ(repository.defaultBranchName(), std::nullopt);
}

TEST(RKTServiceRepository, KeepsEachPropertyInItsOwnPlace) {
    const auto url = [](const char* text) { return RKTURL::URLWithString(text); };
    RKTServiceRepository repository;
    repository.setIdentifier(1);
    repository.setName("name");
    repository.setFullName("full name");
    repository.setDescriptiveText("text");
    repository.setPath("path");
    repository.setFullPath("full/path");
    repository.setOwnerIdentifier("owner");
    repository.setOwnerName("owner name");
    repository.setState("open");
    repository.setVisibility("public");
    repository.setIsFork(RKTNumber(false));
    repository.setNumberOfStars(2);
    repository.setNumberOfForks(3);
    repository.setAvatarURL(url("https://h/avatar"));
    repository.setWebURL(url("https://h/web"));
    repository.setSSHRepositoryURL(url("ssh://git@h/r.git"));
    repository.setHTTPSRepositoryURL(url("https://h/r.git"));
    repository.setDefaultBranchName("main");

    EXPECT_THAT(repository.identifier(), Optional(RKTServiceIdentifier(1)));
    EXPECT_THAT(repository.name(), Optional(std::string("name")));
    EXPECT_THAT(repository.fullName(), Optional(std::string("full name")));
    EXPECT_THAT(repository.descriptiveText(), Optional(std::string("text")));
    EXPECT_THAT(repository.path(), Optional(std::string("path")));
    EXPECT_THAT(repository.fullPath(), Optional(std::string("full/path")));
    EXPECT_THAT(repository.ownerIdentifier(), Optional(RKTServiceIdentifier("owner")));
    EXPECT_THAT(repository.ownerName(), Optional(std::string("owner name")));
    EXPECT_THAT(repository.state(), Optional(std::string("open")));
    EXPECT_THAT(repository.visibility(), Optional(std::string("public")));
    EXPECT_THAT(repository.isFork(), Optional(RKTNumber(false)));
    EXPECT_THAT(repository.numberOfStars(), Optional(RKTNumber(2)));
    EXPECT_THAT(repository.numberOfForks(), Optional(RKTNumber(3)));
    EXPECT_EQ(repository.avatarURL(), url("https://h/avatar"));
    EXPECT_EQ(repository.webURL(), url("https://h/web"));
    EXPECT_EQ(repository.SSHRepositoryURL(), url("ssh://git@h/r.git"));
    EXPECT_EQ(repository.HTTPSRepositoryURL(), url("https://h/r.git"));
    EXPECT_THAT(repository.defaultBranchName(), Optional(std::string("main")));
}

TEST(RKTServiceRepository, TellsZeroFromNotReported) {
    RKTServiceRepository repository;
    repository.setNumberOfStars(0);
    EXPECT_THAT(repository.numberOfStars(), Optional(RKTNumber(0)));
    EXPECT_EQ(repository.numberOfForks(), std::nullopt);
}

TEST(RKTServiceRepository, TakesIdentifiersOfBothKinds) {
    RKTServiceRepository repository;
    repository.setIdentifier(RKTServiceIdentifier(RKTNumber(1296269)));
    EXPECT_THAT(repository.identifier()->numberValue(), Optional(RKTNumber(1296269)));
    repository.setIdentifier(RKTServiceIdentifier("{uuid}"));
    EXPECT_THAT(repository.identifier()->stringValue(), Optional(std::string("{uuid}")));
}

TEST(RKTServiceRepository, DoesNotCheckItsTexts) {
    RKTServiceRepository repository;
    repository.setVisibility("secret");
    repository.setState("frozen");
    EXPECT_THAT(repository.visibility(), Optional(std::string("secret")));
    EXPECT_THAT(repository.state(), Optional(std::string("frozen")));
}

}  // namespace
