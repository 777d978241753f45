#include "Csv.h"

#include <string_view>
#include <variant>

#include "DisplayText.h"

namespace korvogit {

namespace {

constexpr std::string_view lineEnd = "\r\n";

std::string inQuotes(const std::string& text) {
    if (!text.empty() && text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string field = "\"";
    for (const char c : text) {
        if (c == '"') field += '"';
        field += c;
    }
    return field + "\"";
}

std::string csvField(const FieldValue& value, bool forTerminal) {
    std::string text = fieldText(value);
    if (!std::holds_alternative<std::string>(value)) return text;
    return inQuotes(forTerminal ? displayText(text) : text);
}

template <class TextOf>
std::string line(std::span<const RepositoryField> fields, TextOf textOf) {
    std::string line;
    for (const RepositoryField& field : fields) {
        if (&field != &fields.front()) line += ',';
        line += textOf(field);
    }
    // Most readers take a blank line for none.
    if (line.empty()) line = inQuotes(line);
    return line.append(lineEnd);
}

}  // namespace

std::string csvHeader(std::span<const RepositoryField> fields) {
    return line(fields, [](const RepositoryField& field) { return field.name; });
}

std::string csvLines(const RKTServiceArrayResult::Results& repositories,
                     std::span<const RepositoryField> fields, bool forTerminal) {
    std::string csv;
    for (const auto& repository : repositories) {
        csv += line(fields, [&](const RepositoryField& field) {
            return csvField(field.value(*repository), forTerminal);
        });
    }
    return csv;
}

}  // namespace korvogit
