// JSON, read a second time by another parser and kept in plain values.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "KorvoGitService/RKTJSON.h"
#include "KorvoGitService/RKTNumber.h"

namespace fuzz::plain {

struct Member;

struct JSON {
    struct Null {};
    using Elements = std::vector<JSON>;
    using Members = std::vector<Member>;  // as they come, a name maybe twice
    std::variant<Null, RKTNumber, std::string, Elements, Members> value;

    /// Null where the value is not of that type.
    template <class T>
    const T* as() const {
        return std::get_if<T>(&value);
    }
    /// The first member of that name, when this is a dictionary that has one.
    const JSON* member(std::string_view name) const;
    /// The same when it is of that type, and in a dictionary that is a member itself.
    template <class T>
    std::optional<T> get(std::string_view name) const {
        const auto* found = member(name);
        const T* typed = found ? found->as<T>() : nullptr;
        return typed ? std::optional(*typed) : std::nullopt;
    }
    template <class T>
    std::optional<T> get(std::string_view dictionary, std::string_view name) const {
        const auto* found = member(dictionary);
        return found ? found->get<T>(name) : std::nullopt;
    }
};

struct Member {
    std::string name;
    JSON value;
};

/// Nothing for what is no document.
std::optional<JSON> readJSON(std::string_view text);

/// Whether the library read the same.
bool agree(const JSON& expected, const RKTJSONValue& value);

/// A number's text with a letter for its kind: truth value, integer, floating-point.
std::string tagged(const RKTNumber& number);

}  // namespace fuzz::plain

namespace fuzz {

struct ReadJSON {
    std::optional<RKTJSONDocument> document;
    std::optional<plain::JSON> expected;
    std::optional<RKTError> error;
};

/// Reads both ways and requires agreement.
ReadJSON readJSONBothWays(std::string_view text);

}  // namespace fuzz
