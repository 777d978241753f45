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

/// What is allocated and not freed, in bytes, with the few freed pieces that each thread keeps at
/// hand. 0 where another allocator than the C library's is at work, such as a sanitizer's.
std::size_t memoryInUse();

/// In bytes. Not judged: what the allocator keeps although it is free goes up in steps for minutes,
/// each time that one of its arenas sees more large bodies at once than ever before, and does not
/// come down again. It shows what memoryInUse() does not see, such as files that are mapped.
std::size_t residentMemory();

/// Memory in use over a run, from samples at equal times. The first third is warm-up: pools and
/// caches fill. Memory counts as flat when the median of the last third is no more than a twentieth
/// and 2 MiB above the median of the second third, which is room for the connections and threads
/// that happen to be open.
struct MemoryTrend {
    std::size_t second = 0;  ///< medians, in bytes
    std::size_t last = 0;

    /// @param samples  three at least
    explicit MemoryTrend(const std::vector<std::size_t>& samples);
    bool isFlat() const { return last <= second + second / 20 + (std::size_t{2} << 20); }
};

}  // namespace soak
