// Two threads for one job, so that the one that does it may be kept elsewhere.

#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace rkt {

/// One thread leads: it alone does the job. It may leave the job for a task of unknown length,
/// because the other follows: when a leader is away for longer than `patience`, that one leads, and
/// who comes back too late follows. So a task that is short, as most are, costs no change of
/// threads, and one that is long stops nothing.
///
/// The follower looks at the time only while the leader leaves now and then; otherwise it sleeps.
/// The threads never end, so this lives as long as its process: nobody can wait for a task, and a
/// thread that ends while the process exits would meet the libraries' own clean-up.
class LeaderAndFollower {
public:
    using Patience = std::chrono::steady_clock::duration;
    enum class Left { NotAtAll, AndLeads, AndFollows };

    /// @param lead  the job; called again and again, on one thread at a time. It returns when
    ///              leave() has said "AndFollows", and when stop() has it end.
    LeaderAndFollower(std::function<void()> lead, Patience patience);
    LeaderAndFollower(const LeaderAndFollower&) = delete;
    LeaderAndFollower& operator=(const LeaderAndFollower&) = delete;

    /// For the leader: runs a task, unless the other thread is still in one, is not there or may
    /// not lead any more. After "AndFollows" the job is not the caller's.
    template <class Task>
    Left leave(Task task) {
        if (!goAway()) return Left::NotAtAll;
        task();
        return comeBack() ? Left::AndLeads : Left::AndFollows;
    }

    /// The end of the job: nobody is in it afterwards. Does not wait for tasks, and may come from
    /// one.
    /// @param endJob  has the job return
    void stop(const std::function<void()>& endJob);

private:
    using Clock = std::chrono::steady_clock;

    bool startThread();
    void run();
    bool mayLead() const;
    void follow(std::unique_lock<std::mutex>& lock);
    bool leaderIsAway() const { return away_ && away_ == leader_; }
    bool goAway();
    bool comeBack();

    const std::function<void()> lead_;
    const Patience patience_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<std::thread::id> leader_;
    std::optional<std::thread::id> away_;  // in a task: the leader, or one that was
    Clock::time_point awaySince_;
    bool hasBeenAway_ = false;  // since the follower looked
    bool isFollowed_ = false;
    bool followerSleeps_ = false;  // and needs to be told of the next absence
    bool stopping_ = false;
};

}  // namespace rkt
