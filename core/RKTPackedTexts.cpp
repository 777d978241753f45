#include "KorvoGitService/RKTPackedTexts.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

RKTPackedTexts::Offset RKTPackedTexts::startOf(std::size_t number) const {
    return std::accumulate(sizes_.begin(), sizes_.begin() + number, Offset{0});
}

void RKTPackedTexts::replace(std::size_t number, std::optional<std::string_view> text) {
    if (!text && !get(number)) return;
    const std::string_view bytes = text.value_or(std::string_view());
    const auto start = startOf(number);
    const auto others = used_ - sizes_[number];
    reserve(others + bytes.size());

    char* const place = block_.get() + start;
    if (const auto behind = others - start; behind != 0) {
        std::memmove(place + bytes.size(), place + sizes_[number], behind);
    }
    if (!bytes.empty()) std::memcpy(place, bytes.data(), bytes.size());
    sizes_[number] = static_cast<Offset>(bytes.size());
    used_ = static_cast<Offset>(others + bytes.size());
    const auto bit = std::uint32_t{1} << number;
    present_ = text ? present_ | bit : present_ & ~bit;
}

void RKTPackedTexts::moveTo(std::string& bytes, RKTPackedTexts& room) {
    bytes.append(bytes_, used_);
    bytes_ = nullptr;
    room.block_ = std::move(block_);
    room.bytes_ = room.block_.get();
    room.capacity_ = std::exchange(capacity_, 0);
}

const char* RKTPackedTexts::standAt(const char* place) {
    bytes_ = place;
    return place + used_;
}

// Makes the block large enough for `size` bytes, and for the texts that move there.
void RKTPackedTexts::reserve(std::size_t size) {
    if (size <= capacity_) return;
    size = std::max<std::size_t>(size, used_);
    if (size > std::numeric_limits<Offset>::max()) {
        throw std::length_error("The texts of one record are 4 GiB or more.");
    }
    auto larger = std::make_unique_for_overwrite<char[]>(size);
    std::copy_n(bytes_, used_, larger.get());
    block_ = std::move(larger);
    bytes_ = block_.get();
    capacity_ = static_cast<Offset>(size);
}

void RKTPackedTexts::swap(RKTPackedTexts& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(capacity_, other.capacity_);
    std::swap(present_, other.present_);
    std::swap(used_, other.used_);
    std::swap(sizes_, other.sizes_);
    std::swap(bytes_, other.bytes_);
}
