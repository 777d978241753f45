// When to look at which transfer again.

#pragma once

#include <chrono>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "support/session/Loader.h"

namespace rkt {

/// A queue by time with one entry for each transfer, at or before its real deadline: when the entry
/// comes up, the owner looks at the transfer and enters it again if bytes have moved the deadline.
/// So a byte costs nothing here.
class Deadlines {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Replaces an earlier time of that transfer.
    void set(Loader::Token token, TimePoint when) {
        remove(token);
        queue_.emplace(when, token);
        times_.emplace(token, when);
    }

    void remove(Loader::Token token) {
        const auto found = times_.find(token);
        if (found == times_.end()) return;
        queue_.erase({found->second, token});
        times_.erase(found);
    }

    std::optional<TimePoint> next() const {
        return queue_.empty() ? std::nullopt : std::optional(queue_.begin()->first);
    }

    /// Removes and returns a transfer whose time has come.
    std::optional<Loader::Token> takeDue(TimePoint now) {
        if (queue_.empty() || queue_.begin()->first > now) return std::nullopt;
        const auto token = queue_.begin()->second;
        remove(token);
        return token;
    }

private:
    std::set<std::pair<TimePoint, Loader::Token>> queue_;
    std::unordered_map<Loader::Token, TimePoint> times_;
};

}  // namespace rkt
