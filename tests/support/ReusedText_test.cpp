#include "support/ReusedText.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace {

TEST(ReusedText, RoomThatWasGivenBackIsTakenOnce) {
    std::string text(100'000, 'x');
    const auto* const place = text.data();
    rkt::giveReusedText(std::move(text));
    const auto taken = rkt::takeReusedText(90'000);
    EXPECT_EQ(taken.data(), place);
    EXPECT_NE(rkt::takeReusedText(90'000).data(), place);
}

TEST(ReusedText, ThereIsRoomForAsMuchAsWasAskedFor) {
    rkt::giveReusedText(std::string(100'000, 'x'));
    for (const std::size_t size : {1U, 1000U, 99'000U, 130'000U, 5'000'000U}) {
        EXPECT_GE(rkt::takeReusedText(size).capacity(), size);
    }
}

TEST(ReusedText, ATextThatIsTooSmallStaysForASmallerOne) {
    std::string text(100'000, 'x');
    const auto* const place = text.data();
    rkt::giveReusedText(std::move(text));
    EXPECT_NE(rkt::takeReusedText(150'000).data(), place);
    EXPECT_EQ(rkt::takeReusedText(90'000).data(), place);
}

TEST(ReusedText, TextsThatSuitNobodyMakeRoomForOthers) {
    for (int i = 0; i < 20; ++i) rkt::giveReusedText(std::string(40'000, 'x'));
    std::string text(500'000, 'x');
    const auto* const place = text.data();
    rkt::giveReusedText(std::move(text));
    EXPECT_EQ(rkt::takeReusedText(400'000).data(), place);
}

TEST(ReusedText, ASmallTextDoesNotGetMuchRoom) {
    rkt::giveReusedText(std::string(100'000, 'x'));
    EXPECT_LT(rkt::takeReusedText(100).capacity(), 1000U);
}

TEST(ReusedText, AHugeTextIsNotKept) {
    rkt::giveReusedText(std::string(std::size_t{8} << 20, 'x'));
    EXPECT_TRUE(rkt::takeReusedText(std::size_t{8} << 20).empty());
}

TEST(ReusedText, RoomThatOneThreadGaveBackServesAnother) {
    std::string text(100'000, 'x');
    const auto* const place = text.data();
    std::thread([&text] { rkt::giveReusedText(std::move(text)); }).join();
    EXPECT_EQ(rkt::takeReusedText(90'000).data(), place);
}

}  // namespace
