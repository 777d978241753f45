#include "support/ReusedText.h"

#include <utility>

namespace rkt {
namespace {

/// Room for a page of a hundred records; beyond that, what a thread would hold on to is too much.
constexpr std::size_t keptCapacity = std::size_t{1} << 20;

thread_local std::string kept;

}  // namespace

std::string takeReusedText(std::size_t size) {
    // Whoever keeps the result keeps its room, so that must fit.
    const bool fits = kept.capacity() / 2 <= size;
    return fits ? std::exchange(kept, std::string()) : std::string();
}

void giveReusedText(std::string text) noexcept {
    const bool isWorthKeeping = text.capacity() > kept.capacity();
    if (isWorthKeeping && text.capacity() <= keptCapacity) kept = std::move(text);
}

}  // namespace rkt
