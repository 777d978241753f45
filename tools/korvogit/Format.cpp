#include "Format.h"

#include <string>

namespace korvogit {

namespace {

std::string nameOf(Format format) {
    switch (format) {
        case Format::Json:
            return "json";
        case Format::Csv:
            return "csv";
        case Format::JsonLines:
            return "jsonl";
        case Format::Table:
            break;
    }
    return "table";
}

}  // namespace

void addFormatOption(CLI::App& command, Format& format, const std::vector<Format>& choices) {
    format = choices.front();
    std::string names;
    for (const Format choice : choices) names += (names.empty() ? "" : "|") + nameOf(choice);
    command
        .add_option_function<std::string>(
            "--format",
            [&format, choices, names](const std::string& text) {
                for (const Format choice : choices) {
                    if (text != nameOf(choice)) continue;
                    format = choice;
                    return;
                }
                throw CLI::ValidationError("--format", "must be one of " + names);
            },
            "How to print; default: " + nameOf(format))
        ->type_name(names);
}

}  // namespace korvogit
