#include "KorvoGitService/RKTServiceRepository.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

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
    EXPECT_EQ(repository.identifier()->numberValue(), std::nullopt);
    repository.setIdentifier(RKTServiceIdentifier(7));
    EXPECT_THAT(repository.identifier(), Optional(RKTServiceIdentifier(7)));
    repository.setIdentifier("");
    EXPECT_THAT(repository.identifier(), Optional(RKTServiceIdentifier("")));
    repository.setIdentifier(std::nullopt);
    EXPECT_EQ(repository.identifier(), std::nullopt);
}

TEST(RKTServiceRepository, CopiesAURLThatIsGoneAfterwards) {
    RKTServiceRepository repository;
    repository.setAvatarURL(RKTURL::URLWithString("https://h/longer-than-a-short-string").value());
    EXPECT_EQ(repository.avatarURL(),
              RKTURL::URLWithString("https://h/longer-than-a-short-string"));
}

TEST(RKTServiceRepository, TellsTheEmptyTextFromNothing) {
    RKTServiceRepository repository;
    repository.setName("");
    EXPECT_THAT(repository.name(), Optional(std::string()));
    repository.setWebURL(RKTURL::URLWithString(""));
    EXPECT_EQ(repository.webURL(), RKTURL::URLWithString(""));
    repository.setName(std::nullopt);
    EXPECT_EQ(repository.name(), std::nullopt);
    repository.setWebURL(std::nullopt);
    EXPECT_EQ(repository.webURL(), std::nullopt);
}

TEST(RKTServiceRepository, CopiesTextsOfEveryType) {
    RKTServiceRepository repository;
    const auto name = [&](auto&& text) {
        repository.setName(text);
        return repository.name();
    };
    std::string changing = "a text of its own";
    EXPECT_THAT(name(changing), Optional(changing));
    changing[0] = 'A';
    EXPECT_THAT(repository.name(), Optional(std::string("a text of its own")));
    EXPECT_THAT(name(std::optional(changing)), Optional(changing));
    EXPECT_THAT(name(std::string_view(changing).substr(2)), Optional(changing.substr(2)));
    EXPECT_THAT(name(RKTServiceRepositoryStateOpen), Optional(std::string("open")));
    EXPECT_THAT(name(std::string("a\0b", 3)), Optional(std::string("a\0b", 3)));
    EXPECT_EQ(name(std::optional<std::string>()), std::nullopt);
}

TEST(RKTServiceRepository, KeepsURLsAsTheyAre) {
    RKTServiceRepository repository;
    const auto url = RKTURL::URLWithString("https://[::1]:80/a[1]%20?b#c");
    ASSERT_EQ(url->absoluteString(), "https://[::1]:80/a%5B1%5D%20?b#c");
    repository.setWebURL(url);
    EXPECT_EQ(repository.webURL(), url);
    repository.setAvatarURL(repository.webURL());
    EXPECT_EQ(repository.avatarURL(), url);
}

TEST(RKTServiceRepository, KeepsItsPropertiesApartWhenSeveralThreadsSetThem) {
    RKTServiceRepository repository;
    repository.setPath("never changed");
    const auto setOften = [&](auto setter, auto getter) {
        for (std::size_t i = 0; i < 1000; ++i) {
            const std::string text(i * 7 % 60, static_cast<char>('a' + i % 26));
            (repository.*setter)(text);
            ASSERT_THAT((repository.*getter)(), Optional(text));
            ASSERT_THAT(repository.path(), Optional(std::string("never changed")));
        }
    };
    using R = RKTServiceRepository;
    const std::jthread one([&] { setOften(&R::setName, &R::name); });
    const std::jthread other([&] { setOften(&R::setFullPath, &R::fullPath); });
    for (int i = 0; i < 1000; ++i) {
        const auto identifier =
            i % 2 == 0 ? RKTServiceIdentifier(i) : RKTServiceIdentifier(std::to_string(i));
        repository.setIdentifier(identifier);
        ASSERT_THAT(repository.identifier(), Optional(identifier));
    }
}

TEST(RKTServiceRepository, DoesNotCheckItsTexts) {
    RKTServiceRepository repository;
    repository.setVisibility("secret");
    repository.setState("frozen");
    EXPECT_THAT(repository.visibility(), Optional(std::string("secret")));
    EXPECT_THAT(repository.state(), Optional(std::string("frozen")));
}

}  // namespace
