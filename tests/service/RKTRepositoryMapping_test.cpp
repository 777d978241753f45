#include "KorvoGitService/RKTRepositoryMapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using namespace RKTRepositoryFields;
using Repository = RKTServiceRepository;

void appendToDescription(Repository& repository, const char* text) {
    repository.setDescriptiveText(repository.descriptiveText().value_or("") + text);
}

/// Tells how often and in which order lines were applied.
template <char letter>
void note(Repository& repository, const RKTJSONValue* value) {
    const char text[] = {letter, value ? '+' : '-', '\0'};
    appendToDescription(repository, text);
}

const RKTRepositoryMapping& mapping() {
    static const RKTRepositoryMapping table({
        {"id", number<&Repository::setIdentifier>},
        {"name", string<&Repository::setName>},
        {"full_name", string<&Repository::setFullName>},
        {"owner", "id", string<&Repository::setOwnerIdentifier>},
        {"owner", "name", string<&Repository::setOwnerName>},
        {"archived", number<&Repository::setState, closedWhenTrue>},
        {"visibility", string<&Repository::setVisibility, knownVisibility>},
        {"fork", number<&Repository::setIsFork>},
        {"stars", number<&Repository::setNumberOfStars>},
        {"web", string<&Repository::setWebURL, plainURL>},
        {"ssh", string<&Repository::setSSHRepositoryURL, cloneURL>},
    });
    return table;
}

std::shared_ptr<Repository> mapped(std::string_view json,
                                   const RKTRepositoryMapping& table = mapping()) {
    const auto document = RKTJSONSerialization::JSONObjectWithData(json);
    return table.repositoryWithDictionary(document.value().root().dictionary().value());
}

TEST(RKTRepositoryMapping, SetsWhatTheElementHas) {
    const auto repository = mapped(
        R"({"id": 17, "name": "n", "full_name": "o/n", "owner": {"id": "o1", "name": "O"},
            "fork": true, "stars": 0, "web": "https://h/o/n", "ssh": "git@h:o/n.git"})");
    EXPECT_THAT(repository->identifier(), Optional(RKTServiceIdentifier(17)));
    EXPECT_THAT(repository->name(), Optional(std::string("n")));
    EXPECT_THAT(repository->fullName(), Optional(std::string("o/n")));
    EXPECT_THAT(repository->ownerIdentifier(), Optional(RKTServiceIdentifier("o1")));
    EXPECT_THAT(repository->ownerName(), Optional(std::string("O")));
    EXPECT_EQ(repository->isFork()->type(), RKTNumber::Type::Boolean);
    EXPECT_TRUE(repository->isFork()->boolValue());
    EXPECT_THAT(repository->numberOfStars(), Optional(RKTNumber(0)));
    EXPECT_EQ(repository->webURL(), RKTURL::URLWithString("https://h/o/n"));
    EXPECT_EQ(repository->SSHRepositoryURL(), RKTURL::URLWithString("ssh://git@h/o/n.git"));
}

TEST(RKTRepositoryMapping, LeavesAloneWhatTheElementDoesNotHave) {
    const auto repository = mapped("{}");
    EXPECT_EQ(repository->identifier(), std::nullopt);
    EXPECT_EQ(repository->name(), std::nullopt);
    EXPECT_EQ(repository->ownerIdentifier(), std::nullopt);
    EXPECT_EQ(repository->ownerName(), std::nullopt);
    EXPECT_EQ(repository->isFork(), std::nullopt);
    EXPECT_EQ(repository->numberOfStars(), std::nullopt);
    EXPECT_EQ(repository->webURL(), std::nullopt);
    EXPECT_EQ(repository->SSHRepositoryURL(), std::nullopt);
}

TEST(RKTRepositoryMapping, TakesAWrongTypeForAbsent) {
    const auto repository = mapped(
        R"({"id": "17", "name": 5, "full_name": null, "owner": [{"id": "o1"}], "archived": "true",
            "visibility": {"public": true}, "fork": "yes", "stars": [], "web": true, "ssh": {}})");
    EXPECT_EQ(repository->identifier(), std::nullopt);
    EXPECT_EQ(repository->name(), std::nullopt);
    EXPECT_EQ(repository->fullName(), std::nullopt);
    EXPECT_EQ(repository->ownerIdentifier(), std::nullopt);
    EXPECT_THAT(repository->state(), Optional(std::string("open")));
    EXPECT_THAT(repository->visibility(), Optional(std::string("private")));
    EXPECT_EQ(repository->isFork(), std::nullopt);
    EXPECT_EQ(repository->numberOfStars(), std::nullopt);
    EXPECT_EQ(repository->webURL(), std::nullopt);
    EXPECT_EQ(repository->SSHRepositoryURL(), std::nullopt);
}

TEST(RKTRepositoryMapping, TakesBooleansForNumbers) {
    EXPECT_THAT(mapped(R"({"stars": true})")->numberOfStars(), Optional(RKTNumber(true)));
    EXPECT_THAT(mapped(R"({"archived": 1})")->state(), Optional(std::string("closed")));
}

TEST(RKTRepositoryMapping, CountsTheFirstOfTwoMembersWithOneName) {
    EXPECT_THAT(mapped(R"({"name": "one", "name": "two"})")->name(), Optional(std::string("one")));
    EXPECT_EQ(mapped(R"({"name": null, "name": "two"})")->name(), std::nullopt);
    EXPECT_THAT(mapped(R"({"owner": {"name": "one", "name": "two"}})")->ownerName(),
                Optional(std::string("one")));
    EXPECT_EQ(mapped(R"({"owner": {"id": "1"}, "owner": {"name": "two"}})")->ownerName(),
              std::nullopt);
    EXPECT_EQ(mapped(R"({"owner": 5, "owner": {"name": "two"}})")->ownerName(), std::nullopt);
}

TEST(RKTRepositoryMapping, ComparesKeysExactly) {
    EXPECT_EQ(mapped(R"({"Name": "n"})")->name(), std::nullopt);
    EXPECT_EQ(mapped(R"({"nam": "n", "name2": "n", "": "n", "nane": "n"})")->name(), std::nullopt);
    EXPECT_EQ(mapped(R"({"name\u0000": "n"})")->name(), std::nullopt);
    EXPECT_THAT(mapped(R"({"n\u0061me": "n"})")->name(), Optional(std::string("n")));
    EXPECT_EQ(mapped(R"({"a key that is longer than all that the table has": 1})")->name(),
              std::nullopt);
}

TEST(RKTRepositoryMapping, DoesNotMixUpLevels) {
    const auto repository =
        mapped(R"({"license": {"name": "MIT", "id": 3}, "owner": {"full_name": "x", "stars": 4}})");
    EXPECT_EQ(repository->name(), std::nullopt);
    EXPECT_EQ(repository->identifier(), std::nullopt);
    EXPECT_EQ(repository->fullName(), std::nullopt);
    EXPECT_EQ(repository->numberOfStars(), std::nullopt);
}

TEST(RKTRepositoryMapping, AppliesEachLineOnce) {
    const RKTRepositoryMapping table({
        {"a", note<'a'>},
        {"o", "b", note<'b'>},
        {"o", "c", note<'c'>},
        {"d", note<'d'>},
    });
    const auto trace = [&](const char* json) { return mapped(json, table)->descriptiveText(); };
    EXPECT_THAT(trace(R"({"d": 1, "x": 2, "a": 3, "o": {"c": 4, "b": 5}, "a": 6})"),
                Optional(std::string("d+a+c+b+")));
    EXPECT_THAT(trace(R"({"a": 1, "o": {"b": 2}})"), Optional(std::string("a+b+c-d-")));
    EXPECT_THAT(trace("{}")->size(), 8U);
}

TEST(RKTRepositoryMapping, TakesAsManyLinesAsItSays) {
    // Keys of one letter each, and one for each bit of the mark.
    static const std::string letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    ASSERT_EQ(letters.size(), RKTRepositoryMapping::maximumFieldCount);
    const auto key = [](std::size_t index) { return std::string_view(letters).substr(index, 1); };
    const auto table = [&]<std::size_t... index>(std::index_sequence<index...>) {
        const RKTRepositoryField fields[] = {{key(index), note<'x'>}...};
        return std::make_unique<RKTRepositoryMapping>(fields);
    }(std::make_index_sequence<RKTRepositoryMapping::maximumFieldCount>());
    const auto text = mapped(R"({"A": 1, "_": 2, "_": 3})", *table)->descriptiveText();
    EXPECT_THAT(text->substr(0, 4), "x+x+");
    EXPECT_EQ(text->size(), 2 * letters.size());
}

TEST(RKTRepositoryMapping, MapsTheDictionariesOfAnArrayInTheirOrder) {
    const auto document = RKTJSONSerialization::JSONObjectWithData(
        R"([{"name": "one"}, 5, null, "text", [{"name": "no"}], {}, {"name": "two"}])");
    const auto repositories =
        mapping().repositoriesWithArray(document.value().root().array().value());
    ASSERT_EQ(repositories.size(), 3U);
    EXPECT_THAT(repositories[0]->name(), Optional(std::string("one")));
    EXPECT_EQ(repositories[1]->name(), std::nullopt);
    EXPECT_THAT(repositories[2]->name(), Optional(std::string("two")));
}

TEST(RKTRepositoryMapping, KeepsTheTextsOfEachRecordApartWhateverTheirLength) {
    const std::vector<std::size_t> sizes = {5, 100'000, 0, 2000, 7};
    std::string json = "[";
    for (const auto size : sizes) {
        json += R"({"full_name": ")" + std::string(size, 'f') + R"(", "name": "n"},)";
    }
    const auto document = RKTJSONSerialization::JSONObjectWithData(json + "{}]");
    const auto repositories =
        mapping().repositoriesWithArray(document.value().root().array().value());
    ASSERT_EQ(repositories.size(), sizes.size() + 1);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        EXPECT_THAT(repositories[i]->fullName(), Optional(std::string(sizes[i], 'f')));
        EXPECT_THAT(repositories[i]->name(), Optional(std::string("n")));
    }
    EXPECT_EQ(repositories.back()->fullName(), std::nullopt);
    EXPECT_EQ(repositories.back()->name(), std::nullopt);
}

RKTServiceArrayResult::Results mappedPage(std::string_view json) {
    const auto document = RKTJSONSerialization::JSONObjectWithData(json);
    return mapping().repositoriesWithArray(document.value().root().array().value());
}

TEST(RKTRepositoryMapping, ARecordOutlivesTheResultOfItsPage) {
    const auto kept = mappedPage(R"([{"name": "one"}, {"name": "two"}, {"name": "three"}])")[1];
    EXPECT_THAT(kept->name(), Optional(std::string("two")));
}

TEST(RKTRepositoryMapping, TheMemoryOfAPageIsFreedWithItsLastRecord) {
    auto page = mappedPage(R"([{"name": "one"}, {"name": "two"}])");
    const std::weak_ptr<Repository> first = page[0];
    page[0].reset();
    EXPECT_FALSE(first.expired());
    page[1].reset();
    EXPECT_TRUE(first.expired());
}

TEST(RKTRepositoryMapping, ARecordCanBeChangedWithoutTheOthersOfItsPage) {
    const auto page = mappedPage(R"([{"name": "one", "full_name": "a/one"},
        {"name": "two", "full_name": "a/two"}, {"name": "three", "full_name": "a/three"}])");
    page[0]->setName(std::nullopt);
    page[1]->setName("2");
    page[1]->setName("another name, longer than the first");
    EXPECT_EQ(page[0]->name(), std::nullopt);
    EXPECT_THAT(page[0]->fullName(), Optional(std::string("a/one")));
    EXPECT_THAT(page[1]->name(), Optional(std::string("another name, longer than the first")));
    EXPECT_THAT(page[1]->fullName(), Optional(std::string("a/two")));
    EXPECT_THAT(page[2]->name(), Optional(std::string("three")));
    EXPECT_THAT(page[2]->fullName(), Optional(std::string("a/three")));
}

TEST(RKTRepositoryMapping, PassesOnWhatALineThrows) {
    const RKTRepositoryMapping table({
        {"name", string<&Repository::setName>},
        {"bad",
         [](Repository&, const RKTJSONValue* value) {
             if (value) throw std::runtime_error("a line of its own");
         }},
    });
    const auto document = RKTJSONSerialization::JSONObjectWithData(
        R"([{"name": "one"}, {"name": "two", "bad": 1}, {"name": "three"}])");
    EXPECT_THROW(table.repositoriesWithArray(document.value().root().array().value()),
                 std::runtime_error);
}

TEST(RKTRepositoryMapping, MapsAnEmptyArrayToNoRepositories) {
    const auto document = RKTJSONSerialization::JSONObjectWithData("[]");
    EXPECT_THAT(mapping().repositoriesWithArray(document.value().root().array().value()),
                IsEmpty());
}

TEST(RKTRepositoryMapping, ARecordCanBeChangedFromSeveralThreadsOnceItIsHandedOut) {
    const auto repository = mapped(R"({"name": "a name that needs room of its own"})");
    const auto changeOften = [&](char letter) {
        for (int i = 0; i < 1000; ++i) {
            repository->setName(std::string(40, letter));
            const auto name = repository->name();
            ASSERT_TRUE(name == std::string(40, 'a') || name == std::string(40, 'b')) << *name;
        }
    };
    const std::jthread other(changeOften, 'a');
    changeOften('b');
}

TEST(RKTRepositoryMapping, KeepsLargeIdentifiersExact) {
    EXPECT_EQ(mapped(R"({"id": 18446744073709551615})")->identifier()->description(),
              "18446744073709551615");
    EXPECT_EQ(mapped(R"({"id": -9223372036854775808})")->identifier()->description(),
              "-9223372036854775808");
}

TEST(RKTRepositoryFields, LeaveOutWhatIsNoURL) {
    std::string room;
    EXPECT_FALSE(plainURL("https://h/a b", room).has_value());
    EXPECT_FALSE(plainURL(std::nullopt, room).has_value());
    EXPECT_EQ(plainURL("relative/path", room).value().absoluteString(), "relative/path");
    EXPECT_EQ(cloneURL("relative/path"), std::nullopt);
    EXPECT_EQ(cloneURL(std::nullopt), std::nullopt);
}

TEST(RKTRepositoryFields, ViewAPlainURLWhereItStandsUnlessItMustBeEncoded) {
    std::string room;
    for (const std::string_view plain : {"https://h/a", "https://h/a%20b?c#d"}) {
        EXPECT_EQ(plainURL(plain, room).value().absoluteString().data(), plain.data());
        EXPECT_EQ(room, "");
    }
    const auto encoded = plainURL("https://h/a[1]", room);
    EXPECT_EQ(encoded.value().absoluteString(), "https://h/a%5B1%5D");
    EXPECT_EQ(encoded.value().absoluteString().data(), room.data());
}

/// Gives a view of a text that it makes, longer than what a string holds without a block.
std::optional<std::string_view> repeated(std::optional<std::string_view> text, std::string& room) {
    if (!text) return std::nullopt;
    while (room.size() < 100) room += *text;
    return room;
}

TEST(RKTRepositoryFields, GiveAConversionRoomUntilThePropertyIsSet) {
    static const RKTRepositoryMapping table({{"name", string<&Repository::setName, repeated>},
                                             {"web", string<&Repository::setWebURL, plainURL>}});
    const auto repository = mapped(R"({"name": "ab", "web": "https://h/a[1]"})", table);
    std::string text;
    repeated("ab", text);
    EXPECT_THAT(repository->name(), Optional(text));
    EXPECT_EQ(repository->webURL(), RKTURL::URLWithString("https://h/a[1]"));
    EXPECT_EQ(mapped("{}", table)->name(), std::nullopt);
}

TEST(RKTRepositoryFields, TakeAnUnknownVisibilityForPrivate) {
    EXPECT_THAT(knownVisibility("public"), Optional(std::string("public")));
    EXPECT_THAT(knownVisibility("internal"), Optional(std::string("internal")));
    for (const char* other : {"private", "Public", "limited", ""}) {
        EXPECT_THAT(knownVisibility(other), Optional(std::string("private"))) << other;
    }
    EXPECT_THAT(knownVisibility(std::nullopt), Optional(std::string("private")));
}

}  // namespace
