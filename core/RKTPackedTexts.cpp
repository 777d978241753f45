#include "KorvoGitService/RKTPackedTexts.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

RKTPackedTexts::RKTPackedTexts(const RKTPackedTexts& other) : RKTPackedTexts(other.starts_.back()) {
    std::copy_n(other.block_.get(), capacity_, block_.get());
    present_ = other.present_;
    starts_ = other.starts_;
}

void RKTPackedTexts::set(std::size_t number, std::optional<std::string_view> text) {
    const std::string_view bytes = text.value_or(std::string_view());
    const Offset oldEnd = starts_[number + 1];
    reserve(starts_.back() - (oldEnd - starts_[number]) + bytes.size());

    const auto newEnd = static_cast<Offset>(starts_[number] + bytes.size());
    char* const block = block_.get();
    if (const auto rest = starts_.back() - oldEnd; rest != 0) {
        std::memmove(block + newEnd, block + oldEnd, rest);
    }
    if (!bytes.empty()) std::memcpy(block + starts_[number], bytes.data(), bytes.size());
    for (auto i = number + 1; i <= count; ++i) starts_[i] = starts_[i] - oldEnd + newEnd;
    const auto bit = std::uint32_t{1} << number;
    present_ = text ? present_ | bit : present_ & ~bit;
}

void RKTPackedTexts::clear() noexcept {
    present_ = 0;
    starts_ = {};
}

void RKTPackedTexts::reserve(std::size_t size) {
    if (size <= capacity_) return;
    if (size > std::numeric_limits<Offset>::max()) {
        throw std::length_error("The texts of one record are 4 GiB or more.");
    }
    auto larger = std::make_unique_for_overwrite<char[]>(size);
    std::copy_n(block_.get(), starts_.back(), larger.get());
    block_ = std::move(larger);
    capacity_ = static_cast<Offset>(size);
}

void RKTPackedTexts::swap(RKTPackedTexts& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(capacity_, other.capacity_);
    std::swap(present_, other.present_);
    std::swap(starts_, other.starts_);
}
