// Ways to read JSON that save what the public ones must spend.

#ifndef KORVOGITSERVICE_SUPPORT_JSONREADING_H
#define KORVOGITSERVICE_SUPPORT_JSONREADING_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "KorvoGitService/RKTJSON.h"

namespace rkt {

/// The parser reads so far beyond a text's end, in vectors of bytes.
constexpr std::size_t roomBehindJSON = 64;

/// JSONObjectWithData without a copy of the text, which for a page costs a tenth of the parsing.
/// The text is the same afterwards; with roomBehindJSON bytes of spare capacity it is not moved
/// either.
std::optional<RKTJSONDocument> JSONDocumentInPlace(std::string& text,
                                                   std::optional<RKTError>* error);

/// Which keys are of interest, by length and first byte: lets all of those pass, and few others.
class KeySieve {
public:
    void add(std::string_view key) { bits_ |= bit(key); }
    bool passes(std::string_view key) const { return (bits_ & bit(key)) != 0; }

private:
    static std::uint64_t bit(std::string_view key) {
        const auto first = key.empty() ? 0U : static_cast<unsigned char>(key.front());
        return std::uint64_t{1} << ((key.size() * 5 + first) % 64);
    }
    std::uint64_t bits_ = 0;
};

/// Receives a member; `context` is the caller's.
using MemberVisitor = void (*)(void* context, std::string_view key, const RKTJSONValue& value);

/// Calls `visit` for the members whose keys pass the sieve, as they stand in the document.
/// Services send many members that nobody asked for: those cost next to nothing here.
void visitMembers(const RKTJSONDictionary& dictionary, const KeySieve& sieve, MemberVisitor visit,
                  void* context);

}  // namespace rkt

#endif
