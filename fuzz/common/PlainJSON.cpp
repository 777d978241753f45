#include "fuzz/common/PlainJSON.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "fuzz/common/Target.h"
#include "support/JSONReading.h"

namespace fuzz::plain {

namespace {

constexpr std::size_t deepest = 512;

class Builder : public nlohmann::json_sax<nlohmann::json> {
public:
    bool null() override { return add(JSON::Null()); }
    bool boolean(bool value) override { return add(RKTNumber(value)); }
    bool number_integer(std::int64_t value) override { return add(RKTNumber(value)); }
    bool number_unsigned(std::uint64_t value) override { return add(RKTNumber(value)); }
    bool number_float(double value, const std::string&) override { return add(RKTNumber(value)); }
    bool string(std::string& value) override { return add(value); }
    bool binary(nlohmann::json::binary_t&) override { return false; }
    bool key(std::string& name) override {
        std::get<JSON::Members>(open_.back()->value).push_back({name, JSON()});
        return true;
    }
    bool start_object(std::size_t) override { return open(JSON::Members()); }
    bool start_array(std::size_t) override { return open(JSON::Elements()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
        return false;
    }

    JSON root;

private:
    /// Where the next value belongs. A container does not grow while one in it is open.
    JSON& place() {
        if (open_.empty()) return root;
        if (auto* elements = std::get_if<JSON::Elements>(&open_.back()->value)) {
            return elements->emplace_back();
        }
        return std::get<JSON::Members>(open_.back()->value).back().value;
    }
    template <class T>
    bool add(T value) {
        place().value = std::move(value);
        return true;
    }
    template <class T>
    bool open(T container) {
        JSON& here = place();
        here.value = std::move(container);
        open_.push_back(&here);
        return open_.size() <= deepest;
    }
    bool close() {
        open_.pop_back();
        return true;
    }

    std::vector<JSON*> open_;
};

bool agree(const JSON::Members& expected, const RKTJSONDictionary& dictionary) {
    auto member = dictionary.begin();
    for (const auto& [name, value] : expected) {
        if (member == dictionary.end() || (*member).key != name) return false;
        if (!agree(value, (*member).value)) return false;
        ++member;
    }
    return member == dictionary.end();
}

}  // namespace

const JSON* JSON::member(std::string_view name) const {
    const auto* members = as<Members>();
    if (!members) return nullptr;
    const auto found = std::ranges::find(*members, name, &Member::name);
    return found == members->end() ? nullptr : &found->value;
}

std::optional<JSON> readJSON(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (text.starts_with(mark)) text.remove_prefix(mark.size());
    // What the other parser takes for another mark, and for the end.
    if (text.starts_with(mark) || text.find('\0') != std::string_view::npos) return std::nullopt;
    Builder builder;
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &builder)) return std::nullopt;
    const auto& root = builder.root;
    if (!root.as<JSON::Elements>() && !root.as<JSON::Members>()) return std::nullopt;
    return std::move(builder.root);
}

bool agree(const JSON& expected, const RKTJSONValue& value) {
    if (const auto* number = expected.as<RKTNumber>()) {
        const auto read = value.number();
        return read && tagged(*read) == tagged(*number) && *read == *number;
    }
    if (const auto* text = expected.as<std::string>()) return value.string() == *text;
    if (const auto* elements = expected.as<JSON::Elements>()) {
        const auto array = value.array();
        return array && array->count() == elements->size() &&
               std::equal(elements->begin(), elements->end(), array->begin(), array->end(),
                          [](const auto& a, const auto& b) { return agree(a, b); });
    }
    if (const auto* members = expected.as<JSON::Members>()) {
        const auto dictionary = value.dictionary();
        return dictionary && agree(*members, *dictionary);
    }
    return !value.number() && !value.string() && !value.array() && !value.dictionary();
}

std::string tagged(const RKTNumber& number) {
    switch (number.type()) {
        case RKTNumber::Type::Boolean:
            return "b" + number.stringValue();
        case RKTNumber::Type::Floating:
            return "f" + number.stringValue();
        default:
            return "i" + number.stringValue();
    }
}

}  // namespace fuzz::plain

namespace fuzz {

namespace {

/// Read in the text's own room it is the same document, or refused for the same reason.
void requireTheSameInPlace(std::string_view text, const ReadJSON& copied) {
    std::string room(text);
    std::optional<RKTError> error;
    const auto document = rkt::JSONDocumentInPlace(room, &error);
    require(room == text, "a text that was read stays as it was");
    require(error == copied.error, "what JSON is, in place");
    require(document.has_value() == copied.document.has_value(), "a document in place");
    if (document) {
        require(plain::agree(*copied.expected, document->root()), "what the JSON says, in place");
    }
}

}  // namespace

ReadJSON readJSONBothWays(std::string_view text) {
    ReadJSON result;
    result.document = RKTJSONSerialization::JSONObjectWithData(text, &result.error);
    result.expected = plain::readJSON(text);
    require(result.document.has_value() == result.expected.has_value(), "what JSON is");
    require(result.document.has_value() != result.error.has_value(), "a document or an error");
    requireTheSameInPlace(text, result);
    if (result.document) {
        require(plain::agree(*result.expected, result.document->root()), "what the JSON says");
        return result;
    }
    require(result.error->domain() == RKTError::NSCocoaErrorDomain && result.error->code() == 3840,
            "the JSON error");
    const auto& information = result.error->userInfo();
    const auto position = information.find(RKTError::NSJSONSerializationErrorIndex);
    require(position == information.end() ||
                std::get<RKTNumber>(position->second).unsignedIntegerValue() <= text.size(),
            "an error's place is in the text");
    return result;
}

}  // namespace fuzz
