#include "support/LeaderAndFollower.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <memory>
#include <queue>
#include <vector>

#include "tests/helpers/Awaited.h"

namespace {

using rkt::LeaderAndFollower;
using Left = LeaderAndFollower::Left;
using Thread = std::thread::id;

constexpr LeaderAndFollower::Patience none{0};
constexpr LeaderAndFollower::Patience endless = std::chrono::hours(24);

/// A job of steps that the test puts in one after another, for whoever leads.
class Job {
public:
    /// False when the step lost the lead.
    using Step = std::function<bool(LeaderAndFollower& threads)>;

    explicit Job(LeaderAndFollower::Patience patience) : threads_([this] { lead(); }, patience) {}
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    void put(Step step) {
        const std::lock_guard lock(mutex_);
        steps_.push(std::move(step));
        arrived_.notify_one();
    }
    /// Which thread leads by now.
    Thread leader() {
        const auto thread = std::make_shared<Awaited<Thread>>();
        put([thread](LeaderAndFollower&) {
            thread->put(std::this_thread::get_id());
            return true;
        });
        return thread->first();
    }
    /// How the leader's next task goes.
    Left leave(const std::function<void()>& task) {
        const auto left = std::make_shared<Awaited<Left>>();
        put([left, task](LeaderAndFollower& threads) {
            const auto result = threads.leave(task);
            left->put(result);
            return result != Left::AndFollows;
        });
        return left->first();
    }
    /// Who comes back from a task needs a moment to follow.
    Left leaveOnceFollowed(const std::function<void()>& task) {
        for (;;) {
            const auto left = leave(task);
            if (left != Left::NotAtAll) return left;
            std::this_thread::yield();
        }
    }
    /// @param whenItBegins  runs when nobody may leave any more
    void stop(const std::function<void()>& whenItBegins = [] {}) {
        threads_.stop([&] {
            whenItBegins();
            put(nullptr);
        });
    }

private:
    void lead() {
        for (;;) {
            std::unique_lock lock(mutex_);
            arrived_.wait(lock, [this] { return !steps_.empty(); });
            const auto step = std::move(steps_.front());
            steps_.pop();
            lock.unlock();
            if (!step || !step(threads_)) return;
        }
    }

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::queue<Step> steps_;
    LeaderAndFollower threads_;
};

/// Its threads never end: what they use stays.
Job& lastingJob(LeaderAndFollower::Patience patience) {
    static auto& jobs = *new std::vector<Job*>;
    jobs.push_back(new Job(patience));
    auto& job = *jobs.back();
    job.leaveOnceFollowed([] {});  // both are there
    return job;
}

/// A leader's stay elsewhere, until the test has it come back.
class Stay {
public:
    explicit Stay(Job& job) {
        left_ = std::async(std::launch::async, [this, &job] {
            return job.leaveOnceFollowed([this] {
                began_.put(true);
                end_.wait();
            });
        });
        began_.first();
    }
    Left end() {
        end_.count_down();
        return left_.get();
    }

private:
    Awaited<bool> began_;
    std::latch end_{1};
    std::future<Left> left_;
};

TEST(LeaderAndFollower, TheLeaderOfAShortTaskGoesOn) {
    auto& job = lastingJob(endless);
    const auto leader = job.leader();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Stay(job).end(), Left::AndLeads);
        EXPECT_EQ(job.leader(), leader);
    }
    job.stop();
}

TEST(LeaderAndFollower, TheOtherLeadsWhenTheLeaderStaysAway) {
    auto& job = lastingJob(none);
    for (int i = 0; i < 20; ++i) {
        const auto first = job.leader();
        Stay stay(job);
        EXPECT_NE(job.leader(), first);
        EXPECT_EQ(stay.end(), Left::AndFollows);
    }
    job.stop();
}

TEST(LeaderAndFollower, NobodyLeavesWhileTheOtherIsInATask) {
    auto& job = lastingJob(none);
    Stay stay(job);
    bool ran = false;
    EXPECT_EQ(job.leave([&] { ran = true; }), Left::NotAtAll);
    EXPECT_FALSE(ran);
    EXPECT_EQ(stay.end(), Left::AndFollows);
    job.stop();
}

TEST(LeaderAndFollower, TheEndWaitsForTheJob) {
    auto& job = lastingJob(endless);
    Awaited<bool> stopping;
    std::latch go(1);
    bool done = false;
    job.put([&](LeaderAndFollower&) {
        stopping.put(true);
        go.wait();
        done = true;
        return true;
    });
    stopping.first();
    job.stop([&] { go.count_down(); });
    EXPECT_TRUE(done);
}

TEST(LeaderAndFollower, TheEndDoesNotWaitForATask) {
    auto& job = lastingJob(endless);
    Stay stay(job);
    job.stop();
    EXPECT_EQ(stay.end(), Left::AndFollows);
}

TEST(LeaderAndFollower, TheEndDoesNotWaitForATaskOfOneWhoLed) {
    auto& job = lastingJob(none);
    const auto first = job.leader();
    Stay stay(job);
    EXPECT_NE(job.leader(), first);
    job.stop();
    EXPECT_EQ(stay.end(), Left::AndFollows);
}

TEST(LeaderAndFollower, ATaskMayBeTheEnd) {
    auto& job = lastingJob(endless);
    EXPECT_EQ(job.leave([&] { job.stop(); }), Left::AndFollows);
}

TEST(LeaderAndFollower, NobodyLeavesOnceTheEndHasBegun) {
    auto& job = lastingJob(endless);
    Awaited<bool> inStep;
    std::latch go(1);
    Awaited<Left> left;
    job.put([&](LeaderAndFollower& threads) {
        inStep.put(true);
        go.wait();
        left.put(threads.leave([] {}));
        return true;
    });
    inStep.first();
    job.stop([&] { go.count_down(); });
    EXPECT_EQ(left.first(), Left::NotAtAll);
}

}  // namespace
