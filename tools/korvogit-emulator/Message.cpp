#include "Message.h"

#include <algorithm>
#include <array>

namespace emulator {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char l = lower(c);
    return l >= 'a' && l <= 'f' ? l - 'a' + 10 : -1;
}

std::string formDecoded(std::string text) {
    std::ranges::replace(text, '+', ' ');
    return percentDecoded(text);
}

}  // namespace

std::string percentDecoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 &&
            hexValue(text[i + 2]) >= 0) {
            result += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, lower, lower);
}

void Headers::add(std::string name, std::string value) {
    fields_.emplace_back(std::move(name), std::move(value));
}

void Headers::set(std::string name, std::string value) {
    remove(name);
    add(std::move(name), std::move(value));
}

void Headers::remove(std::string_view name) {
    std::erase_if(fields_,
                  [&](const Field& field) { return equalIgnoringCase(field.first, name); });
}

std::optional<std::string> Headers::get(std::string_view name) const {
    for (const auto& [fieldName, value] : fields_) {
        if (equalIgnoringCase(fieldName, name)) {
            return value;
        }
    }
    return std::nullopt;
}

std::vector<std::string> Headers::all(std::string_view name) const {
    std::vector<std::string> values;
    for (const auto& [fieldName, value] : fields_) {
        if (equalIgnoringCase(fieldName, name)) {
            values.push_back(value);
        }
    }
    return values;
}

std::vector<QueryItem> parseQuery(std::string_view text) {
    std::vector<QueryItem> items;
    while (!text.empty()) {
        const auto piece = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(text.size(), piece.size() + 1));
        if (piece.empty()) {
            continue;
        }
        const auto equals = piece.find('=');
        const auto value = equals == piece.npos ? std::string_view() : piece.substr(equals + 1);
        items.push_back(
            {formDecoded(std::string(piece.substr(0, equals))), formDecoded(std::string(value))});
    }
    return items;
}

std::string Request::host() const {
    const auto bracket = authority.find(']');
    const auto colon = authority.find(':', bracket == authority.npos ? 0 : bracket);
    return authority.substr(0, colon);
}

std::string Request::origin() const {
    return (tls ? "https://" : "http://") + authority;
}

std::optional<std::string> Request::queryValue(std::string_view name) const {
    std::optional<std::string> value;
    for (auto& item : queryItems()) {
        if (item.name == name) {
            value = std::move(item.value);
        }
    }
    return value;
}

Answer jsonAnswer(unsigned status, std::string body) {
    Answer answer;
    answer.status = status;
    answer.headers.add("Content-Type", "application/json; charset=utf-8");
    answer.body = std::move(body);
    return answer;
}

Answer textAnswer(unsigned status, std::string body) {
    Answer answer;
    answer.status = status;
    answer.headers.add("Content-Type", "text/plain; charset=utf-8");
    answer.body = std::move(body);
    return answer;
}

std::string_view usualReason(unsigned status) {
    static constexpr std::array<std::pair<unsigned, std::string_view>, 32> reasons{{
        {100, "Continue"},
        {101, "Switching Protocols"},
        {103, "Early Hints"},
        {200, "OK"},
        {201, "Created"},
        {202, "Accepted"},
        {204, "No Content"},
        {206, "Partial Content"},
        {301, "Moved Permanently"},
        {302, "Found"},
        {303, "See Other"},
        {304, "Not Modified"},
        {307, "Temporary Redirect"},
        {308, "Permanent Redirect"},
        {400, "Bad Request"},
        {401, "Unauthorized"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
        {406, "Not Acceptable"},
        {407, "Proxy Authentication Required"},
        {408, "Request Timeout"},
        {409, "Conflict"},
        {410, "Gone"},
        {415, "Unsupported Media Type"},
        {422, "Unprocessable Entity"},
        {429, "Too Many Requests"},
        {500, "Internal Server Error"},
        {501, "Not Implemented"},
        {502, "Bad Gateway"},
        {503, "Service Unavailable"},
        {504, "Gateway Timeout"},
    }};
    const auto* found = std::ranges::find(reasons, status, [](const auto& r) { return r.first; });
    return found == reasons.end() ? std::string_view("Unknown") : found->second;
}

}  // namespace emulator
