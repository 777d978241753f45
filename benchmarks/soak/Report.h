// Whether the books balance.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "Books.h"
#include "Resources.h"

namespace soak {

/// What a run came to.
struct Report {
    Books::Balance balance;
    std::uint64_t servicesMade = 0;
    std::size_t servicesLeft = 0;  ///< not freed although they were ended
    Resources before;
    Resources after;
    std::vector<std::size_t> memory{};  ///< in use at rest, one sample each secondsPerSample
    std::size_t residentMemory = 0;     ///< at the end; not judged

    static constexpr int secondsPerSample = 5;
    /// A run below a minute is all warm-up.
    bool isLongEnough() const { return memory.size() >= 60 / secondsPerSample; }
    bool judgesMemory() const { return isLongEnough() && memory.back() != 0; }
    bool isInOrder() const;
    /// A table, with what is out of order marked.
    void print(std::ostream& stream) const;
};

}  // namespace soak
