#include "support/ReusedText.h"

#include <utility>

#include "support/Idle.h"

namespace rkt {
namespace {

/// Below this the allocator has the memory at hand.
constexpr std::size_t worthKeeping = std::size_t{32} << 10;
/// Room for a page of a hundred records; beyond that, what a process would hold on to is too much.
constexpr std::size_t keptCapacity = std::size_t{1} << 20;
/// About as many as threads work on answers at once.
constexpr std::size_t keptTexts = 4;

Idle<std::string>& idle() {
    static auto& instance =
        *new Idle<std::string>(keptTexts);  // the library's threads outlive main()
    return instance;
}

}  // namespace

std::string takeReusedText(std::size_t size) {
    // Whoever keeps the result keeps its room, so that must fit. A text that grows is copied, and
    // to twice its room.
    const auto fits = [size](const std::string& text) {
        return text.capacity() >= size && text.capacity() / 2 <= size;
    };
    if (size >= worthKeeping) {
        if (auto kept = idle().take(fits)) return *std::move(kept);
    }
    std::string text;
    text.reserve(size + size / 8);  // one page is not as long as another
    return text;
}

void giveReusedText(std::string text) noexcept {
    const auto capacity = text.capacity();
    if (capacity >= worthKeeping && capacity <= keptCapacity) idle().give(std::move(text));
}

}  // namespace rkt
