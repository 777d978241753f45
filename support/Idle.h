// Things that are dear to make, kept for whoever needs one next.

#ifndef KORVOGITSERVICE_SUPPORT_IDLE_H
#define KORVOGITSERVICE_SUPPORT_IDLE_H

#include <cstddef>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace rkt {

/// For any thread. The thing that was given last is taken first: its memory is in the processor's
/// caches, and one that works alone needs one thing, whichever threads of a pool it runs on.
template <class T>
class Idle {
public:
    /// @param maximum  how many are kept
    explicit Idle(std::size_t maximum) : maximum_(maximum) { kept_.reserve(maximum); }

    /// The last that suits; nothing when none does.
    template <class Suits>
    std::optional<T> take(Suits suits) {
        const std::lock_guard lock(mutex_);
        for (auto place = kept_.end(); place != kept_.begin();) {
            if (!suits(*--place)) continue;
            auto taken = std::move(*place);
            kept_.erase(place);
            return taken;
        }
        return std::nullopt;
    }

    /// One too many is destroyed, without the lock.
    void give(T thing) noexcept {
        const std::lock_guard lock(mutex_);
        if (kept_.size() < maximum_) kept_.push_back(std::move(thing));
    }

private:
    const std::size_t maximum_;
    std::mutex mutex_;
    std::vector<T> kept_;
};

}  // namespace rkt

#endif
