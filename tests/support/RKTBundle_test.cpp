#include "KorvoGitService/RKTBundle.h"

#include <gtest/gtest.h>
#include <libintl.h>
#include <unicode/uchar.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTHTTPURLResponse.h"
#include "KorvoGitService/RKTJSON.h"
#include "support/LibraryBundle.h"
#include "support/ResourcePath.h"
#include "tests/helpers/StringsTable.h"
#include "tests/helpers/TemporaryFolder.h"

namespace {

using namespace std::literals;

/// Folders with tables in two languages.
class RKTBundleTest : public testing::Test {
protected:
    RKTBundleTest() {
        rkt::tests::writeStringsTable(one_.path(), "de", "Main", {{"hello", "schönen Tag"}});
        rkt::tests::writeStringsTable(one_.path(), "fr", "Main", {{"hello", "bonjour"}});
        rkt::tests::writeStringsTable(one_.path(), "de", "Extra", {{"hello", "Extra-Gruß"}});
        rkt::tests::writeStringsTable(other_.path(), "de", "Main", {{"hello", "Servus"}});
    }

    rkt::tests::TemporaryFolder one_;
    rkt::tests::TemporaryFolder other_;
    const RKTBundle bundle_{one_.path().string(), "Main"};
};

TEST_F(RKTBundleTest, FindsTheTextForTheLanguage) {
    const rkt::tests::Language language("de");
    EXPECT_EQ(bundle_.localizedString("hello"), "schönen Tag");
    EXPECT_EQ(KCLocalizedString("hello", bundle_), "schönen Tag");
}

TEST_F(RKTBundleTest, FollowsAChangeOfLanguage) {
    for (const auto& [name, text] : {std::pair{"fr", "bonjour"}, std::pair{"de", "schönen Tag"}}) {
        const rkt::tests::Language language(name);
        EXPECT_EQ(bundle_.localizedString("hello"), text);
    }
}

TEST_F(RKTBundleTest, FindsTheTextInTheTableThatIsNamed) {
    const rkt::tests::Language language("de");
    EXPECT_EQ(bundle_.localizedString("hello", "Extra"), "Extra-Gruß");
    EXPECT_EQ(KCLocalizedStringFromTable("hello", bundle_, "Extra"), "Extra-Gruß");
    EXPECT_EQ(KCLocalizedStringFromTable("hello", bundle_, ""), "schönen Tag");
}

TEST_F(RKTBundleTest, GivesTheKeyWhereThereIsNoTranslation) {
    const rkt::tests::Language language("de");
    EXPECT_EQ(bundle_.localizedString("good-bye"), "good-bye");
    EXPECT_EQ(bundle_.localizedString("hello", "NoSuchTable"), "hello");
    EXPECT_EQ(RKTBundle("/no/such/folder", "Main").localizedString("hello"), "hello");
    EXPECT_EQ(RKTBundle(one_.path().string(), "").localizedString("hello"), "hello");
}

TEST_F(RKTBundleTest, GivesTheKeyWithoutALanguage) {
    EXPECT_EQ(bundle_.localizedString("hello"), "hello");
}

TEST_F(RKTBundleTest, GivesTheEmptyTextForTheEmptyKey) {
    const rkt::tests::Language language("de");
    EXPECT_EQ(bundle_.localizedString(""), "");
}

TEST_F(RKTBundleTest, TakesAKeyForWhatItIs) {
    const rkt::tests::Language language("de");
    EXPECT_EQ(bundle_.localizedString("hello\0"sv), "hello\0"sv);
    EXPECT_EQ(bundle_.localizedString("hello, all"sv.substr(0, 5)), "schönen Tag");
    EXPECT_EQ(bundle_.localizedString("%s %n"), "%s %n");
}

TEST_F(RKTBundleTest, KeepsTablesOfOneNameApart) {
    const rkt::tests::Language language("de");
    const RKTBundle other(other_.path().string(), "Main");
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(bundle_.localizedString("hello"), "schönen Tag");
        EXPECT_EQ(other.localizedString("hello"), "Servus");
    }
}

TEST_F(RKTBundleTest, FindsItsFolderAfterTheApplicationBoundTheTable) {
    const rkt::tests::Language language("de");
    EXPECT_EQ(bundle_.localizedString("hello"), "schönen Tag");
    bindtextdomain("Main", other_.path().c_str());
    bind_textdomain_codeset("Main", "ISO-8859-1");
    EXPECT_EQ(bundle_.localizedString("hello"), "schönen Tag");
}

TEST_F(RKTBundleTest, ServesManyThreads) {
    const rkt::tests::Language language("de");
    const RKTBundle other(other_.path().string(), "Main");
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            const auto& bundle = i % 2 == 0 ? bundle_ : other;
            for (int round = 0; round < 100; ++round) {
                EXPECT_EQ(bundle.localizedString("hello"), i % 2 == 0 ? "schönen Tag" : "Servus");
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

TEST(LibraryBundle, IsOneObjectWithTheLibrarysTable) {
    const auto& bundle = rkt::libraryBundle();
    EXPECT_EQ(&bundle, &rkt::libraryBundle());
    EXPECT_EQ(bundle.resourcePath(), RKTBundle::resourcePathForAddress(
                                         reinterpret_cast<const void*>(&rkt::libraryBundle)));
    EXPECT_EQ(rkt::localized("no such text"), "no such text");
}

TEST(LibraryBundle, TranslatesWhatThisLayerSays) {
    // Beside the translations that the build made, in a language that has none.
    const std::filesystem::path resources = rkt::libraryBundle().resourcePath();
    rkt::tests::writeStringsTable(
        resources, "eo", "KorvoGitService",
        {{"not found", "ne trovita"},
         {"The operation could not be completed.", "La ago malsukcesis."},
         {"The text could not be read because it is not valid JSON.", "Tio ne estas JSON."}});
    const rkt::tests::Language language("eo");

    EXPECT_EQ(RKTHTTPURLResponse::localizedStringForStatusCode(404), "ne trovita");
    EXPECT_EQ(RKTError("Domain", 7).localizedDescription(), "La ago malsukcesis. (Domain 7)");
    std::optional<RKTError> error;
    RKTJSONSerialization::JSONObjectWithData("", &error);
    EXPECT_EQ(error.value().localizedDescription(), "Tio ne estas JSON.");
    std::filesystem::remove_all(resources / "eo");
}

TEST(ResourcePath, BelongsToTheInstalledTree) {
    const std::string expected = "/opt/git/share/locale";
    for (const auto binary :
         {"/opt/git/bin/korvogit", "/opt/git/sbin/x", "/opt/git/lib/libX.so",
          "/opt/git/lib64/libX.so.1", "/opt/git/lib/x86_64-linux-gnu/libX.so.1.0.0",
          "/opt/git/libexec/x", "/opt/git/libexec/git/x"}) {
        EXPECT_EQ(rkt::resourcePathForBinary(binary), expected) << binary;
    }
    EXPECT_EQ(rkt::resourcePathForBinary("/usr/lib/x86_64-linux-gnu/libX.so"), "/usr/share/locale");
    EXPECT_EQ(rkt::resourcePathForBinary("/bin/x"), "/share/locale");
}

TEST(ResourcePath, IsNotTheWorkingDirectorysForAnUnknownBinary) {
    EXPECT_EQ(rkt::resourcePathForBinary(""), "");
    EXPECT_EQ(RKTBundle("", "Main").localizedString("hello"), "hello");
}

TEST(ResourcePath, IsBesideABinaryElsewhere) {
    EXPECT_EQ(rkt::resourcePathForBinary("/home/u/build/x"), "/home/u/build/share/locale");
    EXPECT_EQ(rkt::resourcePathForBinary("/x"), "/share/locale");
}

TEST(ResourcePath, KnowsTheProgramByItsFile) {
    static const char inTheProgram = 0;
    const auto program = std::filesystem::canonical("/proc/self/exe");
    EXPECT_EQ(rkt::binaryPathForAddress(&inTheProgram), program);
    EXPECT_EQ(RKTBundle::resourcePathForAddress(&inTheProgram),
              rkt::resourcePathForBinary(program).string());
}

TEST(ResourcePath, KnowsALibraryByItsFile) {
    const auto path = rkt::binaryPathForAddress(reinterpret_cast<const void*>(&u_isUWhiteSpace));
    EXPECT_TRUE(path.is_absolute());
    EXPECT_TRUE(path.filename().string().starts_with("libicuuc.so")) << path;
}

TEST(ResourcePath, TakesAnAddressOfNoBinaryForTheProgram) {
    const int onTheStack = 0;
    EXPECT_EQ(rkt::binaryPathForAddress(&onTheStack), std::filesystem::canonical("/proc/self/exe"));
}

}  // namespace
