// JSON documents, read in place.

#ifndef KORVOGITSERVICE_RKTJSON_H
#define KORVOGITSERVICE_RKTJSON_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTNumber.h"

class RKTJSONArray;
class RKTJSONDictionary;

/// A value of a document: two words that point into it, valid as long as the RKTJSONDocument lives.
/// Reading is safe from several threads at once. Texts are views of the document. A value made
/// without a document is of no type.
class RKT_EXPORT RKTJSONValue {
public:
    /// Nothing unless the value is of that type. true and false are numbers too
    /// (RKTNumber::Type::Boolean); null is none of these. Integers are exact to 64 bits, signed and
    /// unsigned; beyond that a number is floating-point. A document with a number that is too large
    /// for these, such as 1e400, cannot be read.
    std::optional<RKTNumber> number() const;
    /// UTF-8, with the escapes resolved; may hold NUL characters.
    std::optional<std::string_view> string() const;
    /// The elements; an empty array is not nothing.
    std::optional<RKTJSONArray> array() const;
    /// The members; an empty object is not nothing.
    std::optional<RKTJSONDictionary> dictionary() const;

private:
    friend struct RKTJSONAccess;
    std::array<std::uintptr_t, 2> place_{};
};

/// Goes through its elements in order. To be kept in a variable meanwhile: the one inside
/// `value.array()` itself is gone before the first turn of a range-based for.
class RKT_EXPORT RKTJSONArray {
public:
    /// A place in the document; valid as long as it.
    class RKT_EXPORT Iterator {
    public:
        using value_type = RKTJSONValue;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::input_iterator_tag;
        /// The element here; not to be asked for at the end.
        RKTJSONValue operator*() const;
        /// To the next element.
        Iterator& operator++();
        /// The same; gives the place before.
        Iterator operator++(int) {
            auto before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const Iterator&, const Iterator&) = default;

    private:
        friend struct RKTJSONAccess;
        std::array<std::uintptr_t, 2> place_{};
    };

    /// Walks the array: its length is not stored.
    std::size_t count() const;
    /// The first element, or end() of an empty array.
    Iterator begin() const;
    /// The place after the last element.
    Iterator end() const;

private:
    friend struct RKTJSONAccess;
    RKTJSONArray() = default;
    std::array<std::uintptr_t, 2> place_{};
};

/// To be kept in a variable while it is gone through, as an array.
class RKT_EXPORT RKTJSONDictionary {
public:
    /// A name with its value.
    struct Member {
        /// A view of the document, with the escapes resolved.
        std::string_view key;
        /// Of any type, null included.
        RKTJSONValue value;
    };
    /// A place in the document; valid as long as it.
    class RKT_EXPORT Iterator {
    public:
        using value_type = Member;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::input_iterator_tag;
        /// The member here; not to be asked for at the end.
        Member operator*() const;
        /// To the next member.
        Iterator& operator++();
        /// The same; gives the place before.
        Iterator operator++(int) {
            auto before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const Iterator&, const Iterator&) = default;

    private:
        friend struct RKTJSONAccess;
        std::array<std::uintptr_t, 2> place_{};
    };

    /// `objectForKey:`. Keys are compared byte by byte; of two members with one name the first
    /// counts. Looks through the members from the first on, so that a reader of many members is
    /// better served by one pass over all of them.
    std::optional<RKTJSONValue> objectForKey(std::string_view key) const;

    /// The members as they stand in the document, so that a name may come twice.
    Iterator begin() const;
    /// The place after the last member.
    Iterator end() const;

private:
    friend struct RKTJSONAccess;
    RKTJSONDictionary() = default;
    std::array<std::uintptr_t, 2> place_{};
};

/// A parsed document. Owns everything that its values point into; it may be moved without
/// invalidating them.
class RKT_EXPORT RKTJSONDocument {
public:
    /// Values of the other document are this one's afterwards.
    RKTJSONDocument(RKTJSONDocument&&) noexcept;
    /// As the move constructor; values of the document that stood here end.
    RKTJSONDocument& operator=(RKTJSONDocument&&) noexcept;
    ~RKTJSONDocument();

    /// An array or a dictionary. Not to be asked of a document that was moved from.
    RKTJSONValue root() const;

private:
    friend struct RKTJSONAccess;
    struct Content;
    explicit RKTJSONDocument(std::unique_ptr<Content> content);
    std::unique_ptr<Content> content_;
};

/// JSON as in RFC 8259, strictly: no comments, no trailing commas, no NaN; UTF-8 with or without a
/// byte-order mark; an array or an object at the top; at most 512 levels deep.
class RKT_EXPORT RKTJSONSerialization {
public:
    /// `JSONObjectWithData:options:error:` without options. Nothing for anything else, the empty
    /// text included; `error`, when given, then receives the reason (NSCocoaErrorDomain, 3840).
    /// `data` need not outlive the call.
    static std::optional<RKTJSONDocument> JSONObjectWithData(
        std::string_view data, std::optional<RKTError>* error = nullptr);

    /// The document `{}`: what an empty body stands for where it is not an error.
    static const RKTJSONDocument& emptyDictionary();
};

#endif
