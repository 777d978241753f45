// Counts what the process takes from the heap: a program that is linked with this file has malloc,
// calloc, realloc and aligned_alloc counted, whoever calls them: operator new, libcurl, OpenSSL.

#include <atomic>
#include <cstddef>

#include "benchmarks/common/Client.h"

// glibc's own names for what is replaced here (its manual, "Replacing malloc").
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

constinit std::atomic<std::uint64_t> counter = 0;

void count() {
    counter.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    count();
    return __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) {
    count();
    return __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size) {
    count();
    return __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    count();
    return __libc_memalign(alignment, size);
}
}

namespace {

[[maybe_unused]] const bool counting = [] {
    bench::allocationCount = [] { return counter.load(std::memory_order_relaxed); };
    return true;
}();

}  // namespace
