#include "Resources.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace soak {

namespace {

std::size_t entriesOf(const char* folder) {
    using std::filesystem::directory_iterator;
    return static_cast<std::size_t>(std::distance(directory_iterator(folder), {}));
}

std::size_t median(std::vector<std::size_t> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

}  // namespace

Resources Resources::now() {
    return {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")};
}

std::size_t memoryInUse() {
    const auto allocator = mallinfo2();
    return allocator.uordblks + allocator.hblkhd;
}

std::size_t residentMemory() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

MemoryTrend::MemoryTrend(const std::vector<std::size_t>& samples) {
    const auto third = static_cast<std::ptrdiff_t>(samples.size() / 3);
    second = median({samples.begin() + third, samples.begin() + 2 * third});
    last = median({samples.end() - third, samples.end()});
}

}  // namespace soak
