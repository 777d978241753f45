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
    /// @param maximum  how many are kept; not 0
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

    /// The one that has waited longest makes room, so that what nobody wants does not stay.
    void give(T thing) noexcept {
        std::optional<T> tooMany;  // destroyed without the lock
        const std::lock_guard lock(mutex_);
        if (kept_.size() == maximum_) {
            tooMany = std::move(kept_.front());
            kept_.erase(kept_.begin());
        }
        kept_.push_back(std::move(thing));
    }

private:
    const std::size_t maximum_;
    std::mutex mutex_;
    std::vector<T> kept_;
};

}  // namespace rkt

#endif
