// Texts made at random, most of them wrong in one place, are read as another reader reads them.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "KorvoGitService/RKTJSON.h"

namespace {

using nlohmann::json;

bool agree(const json& expected, const RKTJSONValue& value);

bool numbersAgree(const json& expected, const RKTNumber& number) {
    switch (expected.type()) {
        case json::value_t::boolean:
            return number.type() == RKTNumber::Type::Boolean && number == expected.get<bool>();
        case json::value_t::number_integer:
            return number.type() == RKTNumber::Type::Signed &&
                   number == expected.get<std::int64_t>();
        case json::value_t::number_unsigned:
            return number.type() != RKTNumber::Type::Floating &&
                   number == expected.get<std::uint64_t>();
        default:
            return number.type() == RKTNumber::Type::Floating && number == expected.get<double>();
    }
}

bool arraysAgree(const json& expected, const RKTJSONArray& array) {
    return std::equal(expected.begin(), expected.end(), array.begin(), array.end(), agree);
}

/// The other reader keeps the last of equal keys, so only the number of different ones is compared
/// where a key comes twice.
bool dictionariesAgree(const json& expected, const RKTJSONDictionary& dictionary) {
    json::object_t seen;
    for (const auto& [key, value] : dictionary) {
        seen[std::string(key)] = seen.contains(std::string(key)) ? 2 : 1;
    }
    return seen.size() == expected.size() &&
           std::all_of(seen.begin(), seen.end(), [&](const auto& member) {
               const auto value = dictionary.objectForKey(member.first);
               return expected.contains(member.first) && value &&
                      (member.second == 2 || agree(expected.at(member.first), *value));
           });
}

bool agree(const json& expected, const RKTJSONValue& value) {
    if (expected.is_null()) {
        return !value.number() && !value.string() && !value.array() && !value.dictionary();
    }
    if (expected.is_string()) {
        return value.string() == expected.get<std::string>();
    }
    if (expected.is_array()) {
        const auto array = value.array();
        return array && arraysAgree(expected, *array);
    }
    if (expected.is_object()) {
        const auto dictionary = value.dictionary();
        return dictionary && dictionariesAgree(expected, *dictionary);
    }
    const auto number = value.number();
    return number && numbersAgree(expected, *number);
}

/// Nothing unless `text` is JSON with an array or an object at the top. The other reader skips any
/// byte-order mark, and a NUL ends its text; both are mistakes here.
std::optional<json> readOtherwise(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (text.starts_with(mark)) {
        text.remove_prefix(mark.size());
    }
    if (text.starts_with(mark) || text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    auto value = json::parse(text, nullptr, false);
    return value.is_structured() ? std::optional(std::move(value)) : std::nullopt;
}

/// Pieces of JSON, good and bad.
constexpr std::string_view pieces[] = {"[",
                                       "]",
                                       "{",
                                       "}",
                                       ",",
                                       ":",
                                       " ",
                                       "\n",
                                       "\t",
                                       "\"a\":",
                                       "\"\\u0061\":",
                                       "\"b\":",
                                       "\"a\"",
                                       "\"\"",
                                       "\"\\u0000\"",
                                       "\"\\ud83d\\ude00\"",
                                       "\"\\ud83d\"",
                                       "\"\\\\\"",
                                       "\"é\"",
                                       "\"\xff\"",
                                       "\"\n\"",
                                       "\"\x7f\"",
                                       "\"[{,\"",
                                       "\"x",
                                       "0",
                                       "1",
                                       "-",
                                       "-0",
                                       "01",
                                       "00",
                                       "+1",
                                       ".5",
                                       "1.",
                                       "1e",
                                       "1e5",
                                       "1.50",
                                       "0e999",
                                       "1e400",
                                       "1E-400",
                                       "1.7976931348623158e308",
                                       "2.2250738585072011e-308",
                                       "9223372036854775808",
                                       "-9223372036854775809",
                                       "18446744073709551615",
                                       "18446744073709551616",
                                       "123456789012345678901234567890.5",
                                       "true",
                                       "false",
                                       "null",
                                       "NaN",
                                       "/",
                                       "\x01",
                                       "\xEF\xBB\xBF"};

constexpr std::string_view documents[] = {R"([1,2,{"a":[18446744073709551616,"x"],"b":{}}])",
                                          R"({"a":{"b":[1.5,-2,null,true]},"c":"\n\u00e9"})",
                                          R"([[[[]]],{"k":123456789012345678901}])",
                                          "\xEF\xBB\xBF{\"a\":1,\"a\":2,\"b\":[]}"};

class Maker {
public:
    explicit Maker(unsigned seed) : random_(seed) {}

    std::string text() {
        if (below(2) == 0) {
            return pieced();
        }
        std::string text(documents[below(std::size(documents))]);
        for (auto changes = below(4); changes > 0; --changes) {
            change(text);
        }
        return text;
    }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }
    std::string_view piece() { return pieces[below(std::size(pieces))]; }

    std::string pieced() {
        std::string text = "[";
        for (auto count = below(14); count > 0; --count) {
            text.append(piece()).append(below(2) == 0 ? "," : "");
        }
        return text + "0]";
    }

    void change(std::string& text) {
        const auto place = below(text.size() + 1);
        switch (below(3)) {
            case 0:
                text.insert(place, piece());
                break;
            case 1:
                text.erase(place, 1 + below(3));
                break;
            default:
                text.insert(place, 1, static_cast<char>(below(256)));
                break;
        }
    }

    std::mt19937 random_;
};

TEST(RKTJSONAgreement, HoldsForGoodAndForBadTexts) {
    Maker maker(20'240'101);
    int readable = 0;
    for (int i = 0; i < 20'000; ++i) {
        const auto text = maker.text();
        const auto expected = readOtherwise(text);
        std::optional<RKTError> error;
        const auto document = RKTJSONSerialization::JSONObjectWithData(text, &error);
        ASSERT_EQ(document.has_value(), expected.has_value()) << text;
        ASSERT_TRUE(!document || agree(*expected, document->root())) << text;
        if (error) {
            const auto& position = error->userInfo().at(RKTError::NSJSONSerializationErrorIndex);
            ASSERT_LE(std::get<RKTNumber>(position).unsignedIntegerValue(), text.size()) << text;
        }
        readable += document ? 1 : 0;
    }
    EXPECT_GT(readable, 2'000);
}

}  // namespace
