// How a service identifies a thing of its own.

#ifndef KORVOGITSERVICE_RKTSERVICEIDENTIFIER_H
#define KORVOGITSERVICE_RKTSERVICEIDENTIFIER_H

#include <concepts>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTNumber.h"

/// A remote identifier: a text (a UUID, a slug) or a number, as the service chose. Treat it as
/// opaque: compare, copy, store. A text never equals a number ("1" is not 1); two numbers compare
/// by value.
class RKT_EXPORT RKTServiceIdentifier {
public:
    /// A text, the empty one too.
    RKTServiceIdentifier(std::string value) : value_(std::move(value)) {}
    /// A copy of the text.
    RKTServiceIdentifier(std::string_view value) : value_(std::string(value)) {}
    /// A text; not null.
    RKTServiceIdentifier(const char* value) : value_(std::string(value)) {}
    /// A number, of the type that it has.
    RKTServiceIdentifier(RKTNumber value) : value_(value) {}
    /// A template, so that 0 is a number and not a null pointer to a text.
    template <std::integral T>
    RKTServiceIdentifier(T value) : value_(RKTNumber(value)) {}

    /// Nothing when it is of the other kind.
    std::optional<std::string> stringValue() const;
    /// Nothing when it is a text, even one of digits.
    std::optional<RKTNumber> numberValue() const;

    /// For a log or a list; a text as it is, a number in decimal.
    std::string description() const;
    /// Alike for identifiers that are equal.
    std::size_t hash() const;

    /// Secure coding: bytes that decode to an equal identifier of the same type on any machine and
    /// with any later version of the library. Those of a text that is not UTF-8 decode to nothing.
    std::string encodedData() const;
    /// Nothing for bytes that encodedData() does not make: of another version, unknown type, cut
    /// short or too long, or a text that is not UTF-8.
    static std::optional<RKTServiceIdentifier> identifierWithEncodedData(std::string_view data);

    friend bool operator==(const RKTServiceIdentifier&, const RKTServiceIdentifier&) = default;

private:
    friend class RKTServiceRepository;

    std::variant<std::string, RKTNumber> value_;
};

template <>
struct std::hash<RKTServiceIdentifier> {
    std::size_t operator()(const RKTServiceIdentifier& identifier) const {
        return identifier.hash();
    }
};

#endif
