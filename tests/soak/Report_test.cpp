// What the soak program calls out of order.

#include "benchmarks/soak/Report.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using soak::Books;
using soak::MemoryTrend;
using soak::Outcome;
using soak::Report;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

TEST(SoakBooks, BalanceWhenEachOperationIsCompletedOnce) {
    Books books;
    for (const auto outcome : {Outcome::Succeeded, Outcome::Failed, Outcome::Cancelled}) {
        books.start()->complete(outcome);
    }
    const auto balance = books.balance();
    EXPECT_TRUE(balance.isEven());
    EXPECT_EQ(balance.started, 3);
    EXPECT_EQ(balance.completed, 3);
    EXPECT_EQ(balance.succeeded, 1);
    EXPECT_EQ(balance.failed, 1);
    EXPECT_EQ(balance.cancelled, 1);
}

TEST(SoakBooks, NoticeAnOperationThatIsNotCompleted) {
    Books books;
    const auto entry = books.start();
    EXPECT_FALSE(books.balance().isEven());
    EXPECT_EQ(books.balance().inFlight(), 1);
    EXPECT_FALSE(books.waitForFewerThan(1, std::chrono::milliseconds(1)));
    entry->complete(Outcome::Succeeded);
    EXPECT_TRUE(books.waitForFewerThan(1, std::chrono::milliseconds(1)));
}

TEST(SoakBooks, NoticeASecondCompletion) {
    Books books;
    const auto entry = books.start();
    entry->complete(Outcome::Succeeded);
    entry->complete(Outcome::Cancelled);
    EXPECT_EQ(books.balance().doubled, 1);
    EXPECT_EQ(books.balance().completed, 1);
    EXPECT_FALSE(books.balance().isEven());
}

// One that is lost must not be made up for by one that is doubled.
TEST(SoakBooks, NoticeALostOperationBesideADoubledOne) {
    Books books;
    const auto twice = books.start();
    twice->complete(Outcome::Succeeded);
    twice->complete(Outcome::Succeeded);
    books.start();
    EXPECT_EQ(books.balance().inFlight(), 1);
    EXPECT_EQ(books.balance().dropped, 1);
}

TEST(SoakMemory, InUseIsWhatIsNotFreed) {
    if (!std::string_view(KORVOGIT_SANITIZE).empty())
        GTEST_SKIP() << "a sanitizer has an allocator of its own";
    const auto before = soak::memoryInUse();
    auto large = std::make_unique<std::vector<char>>(40 * mebibyte);
    std::vector<std::string> small(10000, std::string(1000, 's'));
    EXPECT_GT(soak::memoryInUse(), before + 49 * mebibyte);
    large.reset();
    small.clear();
    small.shrink_to_fit();
    EXPECT_LT(soak::memoryInUse(), before + mebibyte);
}

TEST(SoakMemoryTrend, IsFlatWhateverTheWarmUp) {
    std::vector<std::size_t> samples(20, 10 * mebibyte);
    samples.resize(60, 100 * mebibyte);
    EXPECT_TRUE(MemoryTrend(samples).isFlat());
}

TEST(SoakMemoryTrend, LooksPastSinglePeaks) {
    std::vector<std::size_t> samples(60, 100 * mebibyte);
    samples.back() = 500 * mebibyte;
    EXPECT_TRUE(MemoryTrend(samples).isFlat());
}

TEST(SoakMemoryTrend, RisesWithALeak) {
    std::vector<std::size_t> samples;
    while (samples.size() < 120) samples.push_back(30 * mebibyte + samples.size() * mebibyte / 8);
    EXPECT_FALSE(MemoryTrend(samples).isFlat());
}

Report inOrder() {
    Report report;
    report.balance = {.started = 2, .completed = 2, .succeeded = 2};
    report.before = report.after = {17, 4};
    report.memory.assign(12, mebibyte);
    return report;
}

std::string text(const Report& report) {
    std::ostringstream stream;
    report.print(stream);
    return stream.str();
}

TEST(SoakReport, IsInOrderWhenEverythingIs) {
    EXPECT_TRUE(inOrder().isInOrder());
    EXPECT_EQ(text(inOrder()).find("OUT OF ORDER"), std::string::npos);
}

TEST(SoakReport, MarksWhateverIsOutOfOrder) {
    const auto spoil = [](auto change) {
        auto report = inOrder();
        change(report);
        EXPECT_FALSE(report.isInOrder());
        EXPECT_NE(text(report).find("OUT OF ORDER"), std::string::npos) << text(report);
    };
    spoil([](Report& report) { report.balance.completed = 1; });
    spoil([](Report& report) { report.balance.doubled = 1; });
    spoil([](Report& report) { report.balance.dropped = 1; });
    spoil([](Report& report) { report.servicesLeft = 1; });
    spoil([](Report& report) { ++report.after.descriptors; });
    spoil([](Report& report) { ++report.after.threads; });
    spoil([](Report& report) { report.memory.resize(18, 9 * mebibyte); });
}

TEST(SoakReport, JudgesNoMemoryBelowAMinute) {
    auto report = inOrder();
    report.memory = {mebibyte, mebibyte, 900 * mebibyte};
    EXPECT_TRUE(report.isInOrder());
    EXPECT_NE(text(report).find("not judged below a minute"), std::string::npos);
}

TEST(SoakReport, SaysSoWhereMemoryIsNotTold) {
    auto report = inOrder();
    report.memory.assign(12, 0);
    EXPECT_NE(text(report).find("not told by the allocator"), std::string::npos);
}

}  // namespace
