#include "Books.h"

namespace soak {

std::shared_ptr<Books::Entry> Books::start() {
    {
        const std::lock_guard lock(mutex_);
        ++balance_.started;
    }
    return std::make_shared<Entry>(*this);
}

Books::Balance Books::balance() const {
    const std::lock_guard lock(mutex_);
    return balance_;
}

bool Books::waitForFewerThan(std::uint64_t inFlight, std::chrono::milliseconds patience) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [&] { return balance_.inFlight() < inFlight; });
}

void Books::enter(Outcome outcome, bool isFirst) {
    const std::lock_guard lock(mutex_);
    if (!isFirst) {
        ++balance_.doubled;
        return;
    }
    ++balance_.completed;
    switch (outcome) {
        case Outcome::Succeeded:
            ++balance_.succeeded;
            break;
        case Outcome::Failed:
            ++balance_.failed;
            break;
        case Outcome::Cancelled:
            ++balance_.cancelled;
            break;
    }
    changed_.notify_all();
}

void Books::close(bool unheard) {
    if (!unheard) return;
    const std::lock_guard lock(mutex_);
    ++balance_.dropped;
}

}  // namespace soak
