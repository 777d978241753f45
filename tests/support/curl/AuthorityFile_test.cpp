#include "support/curl/AuthorityFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "tests/helpers/TemporaryFolder.h"

namespace {

using rkt::pathOfCurrentContent;

class AuthorityFile : public testing::Test {
protected:
    const rkt::tests::TemporaryFolder folder_;
    const std::string path_ = folder_.path() / "ca.pem";

    void write(const std::string& content) const {
        const auto fresh = folder_.path() / "new.pem";
        std::ofstream(fresh) << content;
        std::filesystem::rename(fresh, path_);
    }
    static std::string contentOf(const std::string& path) {
        std::ifstream stream(path);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }
};

TEST_F(AuthorityFile, HasItsOwnPathUntilItChanges) {
    EXPECT_EQ(pathOfCurrentContent(path_), path_);  // before it is there
    EXPECT_EQ(pathOfCurrentContent(path_), path_);
    write("one");
    const auto spelling = pathOfCurrentContent(path_);
    EXPECT_NE(spelling, path_);
    EXPECT_EQ(pathOfCurrentContent(path_), spelling);
}

TEST_F(AuthorityFile, IsTheSameFileInEverySpelling) {
    const auto relative = std::filesystem::relative(path_).string();
    for (const std::string content : {"one", "another", "a third"}) {
        write(content);
        EXPECT_EQ(contentOf(pathOfCurrentContent(path_)), content);
        EXPECT_EQ(contentOf(pathOfCurrentContent(relative)), content);
    }
}

// Nor is the spelling of one path another's, however that is written.
TEST_F(AuthorityFile, NeverHasASpellingTwice) {
    const auto paths = {path_, "/." + path_, "/" + path_, "/.//." + path_};
    std::set<std::string> spellings;
    for (int i = 0; i < 300; ++i) {
        write(std::to_string(i));
        for (const auto& path : paths) {
            EXPECT_TRUE(spellings.insert(pathOfCurrentContent(path)).second) << path << " " << i;
        }
    }
}

}  // namespace
