// What the process takes of the system.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace soak {

struct Resources {
    std::size_t descriptors = 0;
    std::size_t threads = 0;

    static Resources now();
    bool operator==(const Resources&) const = default;
};

/// In bytes.
std::size_t residentMemory();

/// Memory over a run, from samples at equal times. The first third is warm-up: pools, caches and
/// the allocator's arenas fill. Memory counts as flat when the median of the last third is no more
/// than a twentieth and 2 MiB above the median of the second third, which is room for what the
/// allocator keeps or gives back as it likes.
struct MemoryTrend {
    std::size_t second = 0;  ///< medians, in bytes
    std::size_t last = 0;

    /// @param samples  three at least
    explicit MemoryTrend(const std::vector<std::size_t>& samples);
    bool isFlat() const { return last <= second + second / 20 + (std::size_t{2} << 20); }
};

}  // namespace soak
