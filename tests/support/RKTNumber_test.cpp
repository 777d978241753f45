#include "KorvoGitService/RKTNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

using Signed = std::numeric_limits<std::int64_t>;
using Unsigned = std::numeric_limits<std::uint64_t>;
using Floating = std::numeric_limits<double>;

/// Equal within a group, different between two groups.
const std::vector<std::vector<RKTNumber>> groups = {
    {false, 0, 0u, 0.0, -0.0},
    {true, 1, 1u, std::uint64_t{1}, 1.0},
    {-1, std::int64_t{-1}, -1.0},
    {2, 2u, 2.0},
    {0.5},
    {-0.5},
    {std::int64_t{1} << 53, std::uint64_t{1} << 53, 9007199254740992.0},
    {(std::int64_t{1} << 53) + 1, (std::uint64_t{1} << 53) + 1},
    {Signed::max(), static_cast<std::uint64_t>(Signed::max())},
    {std::uint64_t{1} << 63, 9223372036854775808.0},
    {Signed::min(), -9223372036854775808.0},
    {Signed::min() + 1},
    {-9223372036854777856.0},
    {Unsigned::max()},
    {Unsigned::max() - 1},
    {18446744073709551616.0},
    {1e300},
    {-1e300},
    {Floating::denorm_min()},
    {Floating::infinity()},
    {-Floating::infinity()},
    {Floating::quiet_NaN(), -Floating::quiet_NaN(), std::nan("7")},
};

TEST(RKTNumber, IsEqualToTheSameValueOfAnyTypeAndToNoOther) {
    for (const auto& group : groups) {
        for (const auto& other : groups) {
            for (const auto& a : group) {
                for (const auto& b : other) {
                    EXPECT_EQ(a == b, &group == &other)
                        << a.stringValue() << " and " << b.stringValue();
                }
            }
        }
    }
}

TEST(RKTNumber, HashesEqualValuesAlike) {
    std::unordered_set<std::size_t> hashes;
    for (const auto& group : groups) {
        for (const auto& number : group) {
            EXPECT_EQ(number.hash(), group.front().hash()) << number.stringValue();
            EXPECT_EQ(std::hash<RKTNumber>()(number), number.hash());
        }
        hashes.insert(group.front().hash());
    }
    EXPECT_GT(hashes.size(), groups.size() / 2);
}

TEST(RKTNumber, KeepsItsType) {
    EXPECT_EQ(RKTNumber(true).type(), RKTNumber::Type::Boolean);
    EXPECT_EQ(RKTNumber(1).type(), RKTNumber::Type::Signed);
    EXPECT_EQ(RKTNumber(1L).type(), RKTNumber::Type::Signed);
    EXPECT_EQ(RKTNumber(1u).type(), RKTNumber::Type::Unsigned);
    EXPECT_EQ(RKTNumber(std::size_t{1}).type(), RKTNumber::Type::Unsigned);
    EXPECT_EQ(RKTNumber(1.0).type(), RKTNumber::Type::Floating);
}

TEST(RKTNumber, IsTrueUnlessZero) {
    EXPECT_FALSE(RKTNumber(false).boolValue());
    EXPECT_FALSE(RKTNumber(0).boolValue());
    EXPECT_FALSE(RKTNumber(0u).boolValue());
    EXPECT_FALSE(RKTNumber(-0.0).boolValue());
    EXPECT_TRUE(RKTNumber(true).boolValue());
    EXPECT_TRUE(RKTNumber(-1).boolValue());
    EXPECT_TRUE(RKTNumber(256u).boolValue());
    EXPECT_TRUE(RKTNumber(0.25).boolValue());
    EXPECT_TRUE(RKTNumber(Floating::quiet_NaN()).boolValue());
}

TEST(RKTNumber, TruncatesAndClampsToAnInteger) {
    EXPECT_EQ(RKTNumber(true).integerValue(), 1);
    EXPECT_EQ(RKTNumber(-7).integerValue(), -7);
    EXPECT_EQ(RKTNumber(3599.9).integerValue(), 3599);
    EXPECT_EQ(RKTNumber(-3599.9).integerValue(), -3599);
    EXPECT_EQ(RKTNumber(Unsigned::max()).integerValue(), Signed::max());
    EXPECT_EQ(RKTNumber(std::uint64_t{1} << 63).integerValue(), Signed::max());
    EXPECT_EQ(RKTNumber(9223372036854775808.0).integerValue(), Signed::max());
    EXPECT_EQ(RKTNumber(9223372036854774784.0).integerValue(), 9223372036854774784);
    EXPECT_EQ(RKTNumber(-9223372036854775808.0).integerValue(), Signed::min());
    EXPECT_EQ(RKTNumber(1e300).integerValue(), Signed::max());
    EXPECT_EQ(RKTNumber(-1e300).integerValue(), Signed::min());
    EXPECT_EQ(RKTNumber(Floating::infinity()).integerValue(), Signed::max());
    EXPECT_EQ(RKTNumber(-Floating::infinity()).integerValue(), Signed::min());
    EXPECT_EQ(RKTNumber(Floating::quiet_NaN()).integerValue(), 0);
}

TEST(RKTNumber, WrapsANegativeNumberAsUnsigned) {
    EXPECT_EQ(RKTNumber(-1).unsignedIntegerValue(), Unsigned::max());
    EXPECT_EQ(RKTNumber(-1.0).unsignedIntegerValue(), Unsigned::max());
    EXPECT_EQ(RKTNumber(-1.9).unsignedIntegerValue(), Unsigned::max());
    EXPECT_EQ(RKTNumber(Signed::min()).unsignedIntegerValue(), std::uint64_t{1} << 63);
    EXPECT_EQ(RKTNumber(-0.9).unsignedIntegerValue(), 0u);
}

TEST(RKTNumber, TruncatesAndClampsToAnUnsignedInteger) {
    EXPECT_EQ(RKTNumber(true).unsignedIntegerValue(), 1u);
    EXPECT_EQ(RKTNumber(42).unsignedIntegerValue(), 42u);
    EXPECT_EQ(RKTNumber(Unsigned::max()).unsignedIntegerValue(), Unsigned::max());
    EXPECT_EQ(RKTNumber(2.9).unsignedIntegerValue(), 2u);
    EXPECT_EQ(RKTNumber(1e19).unsignedIntegerValue(), 10'000'000'000'000'000'000u);
    EXPECT_EQ(RKTNumber(18446744073709551616.0).unsignedIntegerValue(), Unsigned::max());
    EXPECT_EQ(RKTNumber(Floating::infinity()).unsignedIntegerValue(), Unsigned::max());
    EXPECT_EQ(RKTNumber(Floating::quiet_NaN()).unsignedIntegerValue(), 0u);
}

TEST(RKTNumber, IsADouble) {
    EXPECT_EQ(RKTNumber(true).doubleValue(), 1.0);
    EXPECT_EQ(RKTNumber(-3).doubleValue(), -3.0);
    EXPECT_EQ(RKTNumber(Unsigned::max()).doubleValue(), 18446744073709551616.0);
    EXPECT_EQ(RKTNumber(0.1).doubleValue(), 0.1);
}

TEST(RKTNumber, IsWrittenInDecimal) {
    EXPECT_EQ(RKTNumber(true).stringValue(), "1");
    EXPECT_EQ(RKTNumber(false).stringValue(), "0");
    EXPECT_EQ(RKTNumber(Signed::min()).stringValue(), "-9223372036854775808");
    EXPECT_EQ(RKTNumber(Unsigned::max()).stringValue(), "18446744073709551615");
    EXPECT_EQ(RKTNumber(1.0).stringValue(), "1");
    EXPECT_EQ(RKTNumber(100000.0).stringValue(), "100000");
    EXPECT_EQ(RKTNumber(-0.5).stringValue(), "-0.5");
    EXPECT_EQ(RKTNumber(0.1).stringValue(), "0.1");
    EXPECT_EQ(RKTNumber(3599.9).stringValue(), "3599.9");
    EXPECT_EQ(RKTNumber(0.0001).stringValue(), "0.0001");
    EXPECT_EQ(RKTNumber(0.00001).stringValue(), "1e-05");
    EXPECT_EQ(RKTNumber(1234567890123456.0).stringValue(), "1234567890123456");
    EXPECT_EQ(RKTNumber(1e16).stringValue(), "1e+16");
    EXPECT_EQ(RKTNumber(1e300).stringValue(), "1e+300");
}

TEST(RKTNumber, IsWrittenSoThatItReadsBackTheSame) {
    for (const double value : {0.1, 1.0 / 3, 5e-324, 1.7976931348623157e308, 123456789.12345679,
                               -2.2250738585072014e-308, 9007199254740993.0, 1e-4}) {
        EXPECT_EQ(std::strtod(RKTNumber(value).stringValue().c_str(), nullptr), value);
    }
}

}  // namespace
