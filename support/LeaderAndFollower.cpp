#include "support/LeaderAndFollower.h"

#include <exception>
#include <system_error>
#include <utility>

#include "support/SignalsBlocked.h"

namespace rkt {

LeaderAndFollower::LeaderAndFollower(std::function<void()> lead, Patience patience)
    : lead_(std::move(lead)), patience_(patience) {
    const SignalsBlocked blocked;
    if (!startThread()) throw std::system_error(std::make_error_code(std::errc::not_enough_memory));
    startThread();  // without it there is a leader that never leaves
}

// False when there is no room for one.
bool LeaderAndFollower::startThread() {
    try {
        std::thread([this] { run(); }).detach();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void LeaderAndFollower::run() {
    std::unique_lock lock(mutex_);
    const auto self = std::this_thread::get_id();
    for (;;) {
        while (!mayLead()) follow(lock);
        leader_ = self;
        lock.unlock();
        lead_();
        lock.lock();
        if (leader_ == self) leader_.reset();
        changed_.notify_all();
    }
}

bool LeaderAndFollower::mayLead() const {
    if (stopping_) return false;
    return !leader_ || (leaderIsAway() && Clock::now() >= awaySince_ + patience_);
}

// Until something may have changed.
void LeaderAndFollower::follow(std::unique_lock<std::mutex>& lock) {
    isFollowed_ = true;
    const bool leavesNowAndThen = std::exchange(hasBeenAway_, false);
    if (leaderIsAway() && !stopping_) {
        changed_.wait_until(lock, awaySince_ + patience_);
    } else if (leavesNowAndThen) {
        changed_.wait_for(lock, patience_);
    } else {
        followerSleeps_ = true;
        changed_.wait(lock);
        followerSleeps_ = false;
    }
    isFollowed_ = false;
}

bool LeaderAndFollower::goAway() {
    const std::lock_guard lock(mutex_);
    if (!isFollowed_ || stopping_) return false;
    away_ = leader_;
    awaySince_ = Clock::now();
    hasBeenAway_ = true;
    if (std::exchange(followerSleeps_, false)) changed_.notify_all();
    return true;
}

bool LeaderAndFollower::comeBack() {
    const std::lock_guard lock(mutex_);
    const bool leads = leaderIsAway();
    away_.reset();
    return leads && !stopping_;
}

void LeaderAndFollower::stop(const std::function<void()>& endJob) {
    std::unique_lock lock(mutex_);
    stopping_ = true;
    lock.unlock();
    endJob();
    lock.lock();
    changed_.wait(lock, [this] { return !leader_ || leaderIsAway(); });
}

}  // namespace rkt
