// Ways to read JSON that save what the public ones must spend.

#ifndef KORVOGITSERVICE_SUPPORT_JSONREADING_H
#define KORVOGITSERVICE_SUPPORT_JSONREADING_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTJSON.h"

namespace rkt {

/// The parser reads so far beyond a text's end, in vectors of bytes.
constexpr std::size_t roomBehindJSON = 64;

/// JSONObjectWithData without a copy of the text, which for a page costs a tenth of the parsing.
/// The text is the same afterwards; with roomBehindJSON bytes of spare capacity it is not moved
/// either.
std::optional<RKTJSONDocument> JSONDocumentInPlace(std::string& text,
                                                   std::optional<RKTError>* error);

/// Keys that are of interest, numbered from 0. Of the many others in a document most are told apart
/// by their length and first byte.
class KeyTable {
public:
    /// Fewer than this.
    static constexpr std::uint8_t none = 0xFF;

    KeyTable() { lastOfSlot_.fill(none); }

    /// @param key  a new one, which outlives the table
    void add(std::string_view key) {
        auto& last = lastOfSlot_[slot(key)];
        entries_.push_back({key, last});
        last = static_cast<std::uint8_t>(entries_.size() - 1);
    }

    /// The number of a key that was added, or none.
    std::uint8_t find(std::string_view key) const {
        auto number = lastOfSlot_[slot(key)];
        while (number != none && entries_[number].key != key) {
            number = entries_[number].previousOfSlot;
        }
        return number;
    }

private:
    struct Entry {
        std::string_view key;
        std::uint8_t previousOfSlot;
    };

    static std::uint8_t slot(std::string_view key) {
        const std::size_t first = key.empty() ? 0 : static_cast<unsigned char>(key.front());
        return static_cast<std::uint8_t>(key.size() * 31 + first * 7);
    }

    std::array<std::uint8_t, 256> lastOfSlot_;
    std::vector<Entry> entries_;
};

/// Receives a member of interest; `context` is the caller's. False when it wants no more.
using MemberVisitor = bool (*)(void* context, std::uint8_t key, const RKTJSONValue& value);

/// Calls `visit` for the members whose keys are in the table, as they stand in the document.
/// Services send many members that nobody asked for: those cost next to nothing here.
void visitMembers(const RKTJSONDictionary& dictionary, const KeyTable& keys, MemberVisitor visit,
                  void* context);

}  // namespace rkt

#endif
