#include "support/JSONRewriting.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "support/JSONParsers.h"

namespace rkt {
namespace {

/// Receives a text's events and writes them out as JSON again. A comma is written before every
/// value and key that does not come first, which the last byte written tells.
class Writer : public nlohmann::json_sax<nlohmann::json> {
public:
    bool null() override { return put("null"); }
    bool boolean(bool value) override { return put(value ? "true" : "false"); }
    bool number_integer(std::int64_t value) override { return put(std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) override { return put(std::to_string(value)); }

    /// Always with an exponent, so that it is never taken for an integer.
    bool number_float(double value, const std::string&) override {
        std::array<char, 32> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                       std::chars_format::scientific)
                             .ptr;
        return put(std::string_view(digits.data(), end));
    }

    bool string(std::string& value) override {
        separate();
        quote(value);
        return true;
    }

    bool key(std::string& name) override {
        separate();
        quote(name);
        result.text->push_back(':');
        return true;
    }

    bool start_object(std::size_t) override { return open('{'); }
    bool start_array(std::size_t) override { return open('['); }
    bool end_object() override { return close('}'); }
    bool end_array() override { return close(']'); }

    /// Texts never contain bytes, so the reader has no events for them.
    bool binary(nlohmann::json::binary_t&) override { return false; }

    /// @param read  how many bytes were read, the offending one (or the end) included
    bool parse_error(std::size_t read, const std::string&,
                     const nlohmann::json::exception&) override {
        result.errorPosition = read - 1;
        return false;
    }

    JSONRewriting result{.text = "", .errorPosition = std::nullopt};

private:
    void separate() {
        if (!result.text->empty() &&
            std::string_view("[{:").find(result.text->back()) == std::string_view::npos) {
            result.text->push_back(',');
        }
    }

    bool put(std::string_view token) {
        separate();
        result.text->append(token);
        return true;
    }

    bool open(char bracket) {
        separate();
        result.text->push_back(bracket);
        return ++depth_ <= jsonDepthLimit;
    }

    bool close(char bracket) {
        result.text->push_back(bracket);
        --depth_;
        return true;
    }

    void quote(std::string_view value) {
        constexpr std::string_view hex = "0123456789abcdef";
        auto& text = *result.text;
        text.push_back('"');
        for (const char c : value) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20) {
                text.append("\\u00").append({hex[byte >> 4], hex[byte & 15]});
                continue;
            }
            if (c == '"' || c == '\\') {
                text.push_back('\\');
            }
            text.push_back(c);
        }
        text.push_back('"');
    }

    std::size_t depth_ = 0;
};

}  // namespace

JSONRewriting rewriteJSON(std::string_view text) {
    Writer writer;
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &writer)) {
        writer.result.text.reset();
    } else if (const auto nul = text.find('\0'); nul != std::string_view::npos) {
        // The reader takes a NUL behind the document for the text's end.
        writer.result = {.text = std::nullopt, .errorPosition = nul};
    }
    return std::move(writer.result);
}

}  // namespace rkt
