// The texts of a record, one behind the other in memory.

#ifndef KORVOGITSERVICE_RKTPACKEDTEXTS_H
#define KORVOGITSERVICE_RKTPACKEDTEXTS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "KorvoGitService/RKTExport.h"

/// Texts by number, each of them nothing at first; the empty text is something. A page of records
/// has more than a thousand short texts: here those of a record stand together, in a block of their
/// own or in memory that the records of a page share, and cost four bytes each beside their own.
/// Not safe from several threads.
class RKT_EXPORT RKTPackedTexts {
public:
    /// Numbers are below this.
    static constexpr std::size_t count = 15;

    /// No texts, and no memory for any.
    RKTPackedTexts() = default;
    /// No texts yet, and a block of so many bytes.
    explicit RKTPackedTexts(std::size_t capacity) { reserve(capacity); }
    RKTPackedTexts(const RKTPackedTexts&) = delete;
    RKTPackedTexts& operator=(const RKTPackedTexts&) = delete;

    /// A view, valid until a text is set and as long as the texts stay where they are.
    std::optional<std::string_view> get(std::size_t number) const {
        if ((present_ >> number & 1U) == 0) return std::nullopt;
        return std::string_view(bytes_ + startOf(number), sizes_[number]);
    }

    /// Copies the text, which is not one of these. The block grows to what is needed and does not
    /// shrink. Throws when there is no memory, and std::length_error when all texts together would
    /// have 4 GiB or more; nothing is changed then.
    void set(std::size_t number, std::optional<std::string_view> text) {
        // Most often texts are set in their order, each behind all that are there.
        if (text && present_ >> number == 0 && used_ + text->size() <= capacity_) {
            text->copy(block_.get() + used_, text->size());
            sizes_[number] = static_cast<Offset>(text->size());
            used_ += sizes_[number];
            present_ |= std::uint32_t{1} << number;
        } else {
            replace(number, text);
        }
    }

    /// How many bytes of text have room in the block.
    std::size_t capacity() const { return capacity_; }

    /// Appends the texts to `bytes` and gives the block to `room`, which has no texts. Nothing but
    /// standAt() may be called next. Nothing is changed when there is no memory.
    void moveTo(std::string& bytes, RKTPackedTexts& room);

    /// @param place  where the bytes that were appended stand now; outlives this object. The next
    ///     change copies them to a block.
    /// @return  what follows them
    const char* standAt(const char* place);

    /// Exchanges texts and blocks.
    void swap(RKTPackedTexts& other) noexcept;

private:
    using Offset = std::uint32_t;

    Offset startOf(std::size_t number) const;
    void replace(std::size_t number, std::optional<std::string_view> text);
    void reserve(std::size_t size);

    std::unique_ptr<char[]> block_;
    Offset capacity_ = 0;  // of the block
    /// A bit for each text that is something.
    std::uint32_t present_ = 0;
    /// Of all texts together. They stand one behind the other, in the order of their numbers.
    Offset used_ = 0;
    std::array<Offset, count> sizes_{};
    /// Where they stand: in the block, or in somebody else's memory.
    const char* bytes_ = nullptr;
};

#endif
