#include "Terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace korvogit {

namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

const char* sequenceOf(Style style) {
    switch (style) {
        case Style::Heading:
            return "\033[1m";
        case Style::Good:
            return "\033[32m";
        case Style::Notable:
            return "\033[33m";
        case Style::Bad:
            return "\033[1;31m";
        case Style::Faint:
            return "\033[2m";
        case Style::Plain:
            break;
    }
    return "";
}

}  // namespace

Terminal Terminal::of(int descriptor) {
    Terminal terminal;
    terminal.isTerminal = isatty(descriptor) == 1;
    if (!terminal.isTerminal) return terminal;
    terminal.movesCursor = environment("TERM") != "dumb" && !environment("TERM").empty();
    // The agreement of https://no-color.org: set and not empty, whatever its value.
    terminal.colours = terminal.movesCursor && environment("NO_COLOR").empty();
    winsize size = {};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) terminal.width = size.ws_col;
    return terminal;
}

std::string Terminal::styled(std::string_view text, Style style) const {
    if (!colours || style == Style::Plain) return std::string(text);
    return sequenceOf(style) + std::string(text) + "\033[0m";
}

bool localeIsUnicode() {
    return std::string_view(nl_langinfo(CODESET)) == "UTF-8";
}

}  // namespace korvogit
