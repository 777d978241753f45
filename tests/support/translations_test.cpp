// The list of texts for translators against what the library says.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>
#include <string_view>

#include "support/StatusTexts.h"
#include "support/session/TransportError.h"

namespace {

using testing::Contains;

/// The keys of the template that scripts/check-translations makes, each on a line of its own.
std::set<std::string> keysForTranslators() {
    constexpr std::string_view start = "msgid \"";
    std::set<std::string> keys;
    std::ifstream file(TEST_DATA_DIR "/../../po/KorvoGitService.pot");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(start)) {
            keys.insert(line.substr(start.size(), line.size() - start.size() - 1));
        }
    }
    return keys;
}

TEST(Translations, AreAskedForOfEveryStatusText) {
    const auto keys = keysForTranslators();
    for (int status = 0; status < 1000; ++status) {
        EXPECT_THAT(keys, Contains(std::string(rkt::statusText(status)))) << status;
    }
}

TEST(Translations, AreAskedForOfEveryTransportError) {
    const auto keys = keysForTranslators();
    for (int code = -1300; code <= -900; ++code) {
        const auto error = rkt::transportError(code, std::nullopt);
        EXPECT_THAT(keys, Contains(error.localizedDescription())) << code;
    }
}

}  // namespace
