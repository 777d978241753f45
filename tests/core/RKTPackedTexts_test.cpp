#include "KorvoGitService/RKTPackedTexts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <functional>
#include <list>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using testing::Optional;

constexpr auto count = RKTPackedTexts::count;

/// What the packed texts should be.
using Texts = std::array<std::optional<std::string>, count>;

Texts textsOf(const RKTPackedTexts& packed) {
    Texts texts;
    for (std::size_t number = 0; number < count; ++number) texts[number] = packed.get(number);
    return texts;
}

std::size_t sizeOf(const Texts& texts) {
    std::size_t size = 0;
    for (const auto& text : texts) size += text.value_or("").size();
    return size;
}

/// Of another length for each number.
Texts fill(RKTPackedTexts& packed) {
    Texts texts;
    for (std::size_t number = 0; number < count; ++number) {
        texts[number] = std::string(3 * number, static_cast<char>('a' + number));
        packed.set(number, texts[number]);
    }
    return texts;
}

/// Texts that moved to memory of somebody else's.
struct Moved {
    explicit Moved(RKTPackedTexts& packed) {
        packed.moveTo(bytes, room);
        EXPECT_EQ(packed.standAt(bytes.data()), bytes.data() + bytes.size());
    }
    /// Whether a text is a view of it.
    bool holds(std::string_view text) const {
        const std::less_equal<const char*> isNotBehind;
        return isNotBehind(bytes.data(), text.data()) &&
               isNotBehind(text.data() + text.size(), bytes.data() + bytes.size());
    }

    std::string bytes;
    RKTPackedTexts room;
};

TEST(RKTPackedTexts, AreNothingAtFirst) {
    const RKTPackedTexts packed;
    EXPECT_EQ(textsOf(packed), Texts());
    EXPECT_EQ(packed.capacity(), 0U);
}

TEST(RKTPackedTexts, TellTheEmptyTextFromNothing) {
    RKTPackedTexts packed;
    packed.set(3, "");
    EXPECT_THAT(packed.get(3), Optional(std::string_view("")));
    packed.set(3, std::nullopt);
    EXPECT_EQ(packed.get(3), std::nullopt);
}

TEST(RKTPackedTexts, KeepEachTextInItsOwnPlace) {
    RKTPackedTexts packed;
    const auto texts = fill(packed);
    EXPECT_EQ(textsOf(packed), texts);
}

TEST(RKTPackedTexts, MayHoldNULCharacters) {
    const std::string text("a\0b\0", 4);
    RKTPackedTexts packed;
    packed.set(0, "before");
    packed.set(1, text);
    EXPECT_THAT(packed.get(1), Optional(std::string_view(text)));
}

TEST(RKTPackedTexts, AreTheLastThatWereSetInWhicheverOrder) {
    std::minstd_rand random(1);
    RKTPackedTexts packed;
    Texts texts;
    std::size_t most = 0;
    std::list<Moved> moved;
    for (int i = 0; i < 5000; ++i) {
        if (random() % 50 == 0) {
            moved.emplace_back(packed);
            most = 0;
        }
        const auto number = random() % count;
        const auto letter = static_cast<char>('a' + random() % 26);
        const auto before = texts;
        texts[number].reset();
        if (random() % 4 != 0) texts[number] = std::string(random() % 40, letter);
        packed.set(number, texts[number]);
        const bool mustCopy = before[number] || texts[number];
        if (mustCopy) most = std::max({most, sizeOf(before), sizeOf(texts)});
        ASSERT_EQ(textsOf(packed), texts) << i;
        ASSERT_EQ(packed.capacity(), most) << i;
    }
}

TEST(RKTPackedTexts, MoveWithoutAByteToSpareAndGiveTheirBlockAway) {
    RKTPackedTexts packed(10'000);
    const auto texts = fill(packed);
    Moved moved(packed);
    EXPECT_EQ(moved.bytes.size(), sizeOf(texts));
    EXPECT_EQ(packed.capacity(), 0U);
    EXPECT_EQ(textsOf(packed), texts);
    EXPECT_TRUE(moved.holds(packed.get(count - 1).value()));

    EXPECT_EQ(moved.room.capacity(), 10'000U);
    EXPECT_EQ(textsOf(moved.room), Texts());
    moved.room.set(0, "another");
    EXPECT_THAT(moved.room.get(0), Optional(std::string_view("another")));
    EXPECT_EQ(textsOf(packed), texts);
}

TEST(RKTPackedTexts, OfSeveralStandOneBehindTheOther) {
    RKTPackedTexts one;
    RKTPackedTexts none;
    RKTPackedTexts other;
    const auto texts = fill(one);
    other.set(2, "two");
    std::string bytes = "before";
    RKTPackedTexts room;
    for (auto* packed : {&one, &none, &other}) packed->moveTo(bytes, room);
    EXPECT_EQ(bytes.size(), 6 + sizeOf(texts) + 3);
    const char* place = bytes.data() + 6;
    for (auto* packed : {&one, &none, &other}) place = packed->standAt(place);
    EXPECT_EQ(place, bytes.data() + bytes.size());
    EXPECT_EQ(textsOf(one), texts);
    EXPECT_EQ(textsOf(none), Texts());
    EXPECT_THAT(other.get(2), Optional(std::string_view("two")));
}

TEST(RKTPackedTexts, LeaveSomebodyElsesMemoryAsItIsWithTheNextChange) {
    for (const std::size_t number : {std::size_t{1}, count / 2, count - 1}) {
        for (const auto& text : {std::optional<std::string>(), std::optional<std::string>("s"),
                                 std::optional<std::string>(std::string(100, 'l'))}) {
            RKTPackedTexts packed;
            auto texts = fill(packed);
            const Moved moved(packed);
            const auto before = moved.bytes;
            packed.set(number, text);
            texts[number] = text;
            EXPECT_EQ(textsOf(packed), texts);
            EXPECT_EQ(packed.capacity(), std::max(sizeOf(texts), before.size()));
            EXPECT_FALSE(moved.holds(packed.get(2).value()));
            EXPECT_EQ(moved.bytes, before);
        }
    }
}

TEST(RKTPackedTexts, StayInSomebodyElsesMemoryWhenNothingIsSetToNothing) {
    RKTPackedTexts packed;
    packed.set(7, "seven");
    const Moved moved(packed);
    for (const std::size_t number : {0U, 6U, 8U, 14U}) packed.set(number, std::nullopt);
    EXPECT_EQ(packed.capacity(), 0U);
    EXPECT_TRUE(moved.holds(packed.get(7).value()));
}

TEST(RKTPackedTexts, CanAllBecomeNothingInSomebodyElsesMemory) {
    RKTPackedTexts packed;
    packed.set(7, "seven");
    const Moved moved(packed);
    packed.set(7, std::nullopt);
    EXPECT_EQ(textsOf(packed), Texts());
    packed.set(7, "again");
    EXPECT_THAT(packed.get(7), Optional(std::string_view("again")));
}

TEST(RKTPackedTexts, AreExchangedWithOthers) {
    RKTPackedTexts one;
    RKTPackedTexts other;
    const auto texts = fill(one);
    other.set(2, "two");
    one.swap(other);
    EXPECT_EQ(textsOf(other), texts);
    EXPECT_THAT(one.get(2), Optional(std::string_view("two")));
    EXPECT_EQ(one.get(3), std::nullopt);
}

TEST(RKTPackedTexts, AreUnchangedWhenOneIsTooLong) {
    RKTPackedTexts packed;
    const auto texts = fill(packed);
    // Room in the address space, of which nothing is read.
    const auto size = std::size_t{1} << 32U;
    void* const pages =
        mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    const std::string_view tooLong(static_cast<const char*>(pages), size);
    EXPECT_THROW(packed.set(4, tooLong), std::length_error);
    EXPECT_THROW(packed.set(4, tooLong.substr(1)), std::length_error);
    RKTPackedTexts one(100);
    one.set(0, "ab");
    EXPECT_THROW(one.set(4, tooLong.substr(1)), std::length_error);
    munmap(pages, size);
    EXPECT_THAT(one.get(0), Optional(std::string_view("ab")));
    EXPECT_EQ(one.get(4), std::nullopt);
    EXPECT_EQ(textsOf(packed), texts);
    EXPECT_EQ(packed.capacity(), sizeOf(texts));
}

}  // namespace
