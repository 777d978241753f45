#include "DisplayText.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <cwctype>

#include "Terminal.h"

namespace korvogit {

namespace {

constexpr wchar_t replacementCharacter = 0xFFFD;

/// Makes the calling thread's wide-character functions speak UTF-8, whatever the user's locale is.
class Utf8Scope {
public:
    Utf8Scope() : previous_(uselocale(utf8())) {}
    ~Utf8Scope() { uselocale(previous_); }
    Utf8Scope(const Utf8Scope&) = delete;
    Utf8Scope& operator=(const Utf8Scope&) = delete;

private:
    /// Where the system has no such locale, everything beyond ASCII becomes a replacement
    /// character.
    static locale_t utf8() {
        static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }
    locale_t previous_;
};

/// Calls visit(character, bytes) for each character, with U+FFFD for each byte that begins none.
/// `visit` returns false to stop.
template <class Visit>
void forEachCharacter(std::string_view text, Visit visit) {
    const Utf8Scope utf8;
    while (!text.empty()) {
        std::mbstate_t state = {};
        wchar_t character = 0;
        std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
        if (length > text.size()) {
            character = replacementCharacter;
            length = 1;
        } else if (length == 0) {
            length = 1;  // NUL
        }
        if (!visit(character, text.substr(0, length))) return;
        text.remove_prefix(length);
    }
}

/// Unicode Standard Annex 9, section 2, and the line and paragraph separators.
bool reordersText(wchar_t c) {
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

bool isC0(wchar_t c) {
    return c < 0x20;
}

bool steersTerminal(wchar_t c) {
    return isC0(c) || (c >= 0x7F && c <= 0x9F) || reordersText(c);
}

std::string escape(wchar_t c) {
    if (c == L'\n') return "\\n";
    if (c == L'\r') return "\\r";
    if (c == L'\t') return "\\t";
    char text[16];
    std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(c));
    return text;
}

std::size_t widthOf(wchar_t c) {
    const int width = wcwidth(c);
    return width < 0 ? 1 : static_cast<std::size_t>(width);
}

}  // namespace

std::string displayText(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    forEachCharacter(text, [&](wchar_t character, std::string_view bytes) {
        if (steersTerminal(character)) {
            shown += escape(character);
        } else if (character == replacementCharacter) {
            shown += "\uFFFD";
        } else {
            shown += bytes;
        }
        return true;
    });
    return shown;
}

std::string displayJSON(std::string_view json) {
    std::string shown;
    shown.reserve(json.size());
    forEachCharacter(json, [&](wchar_t character, std::string_view bytes) {
        if (steersTerminal(character) && !isC0(character)) {
            shown += escape(character);
        } else {
            shown += bytes;
        }
        return true;
    });
    return shown;
}

std::size_t displayWidth(std::string_view displayText) {
    std::size_t width = 0;
    forEachCharacter(displayText, [&](wchar_t character, std::string_view) {
        width += widthOf(character);
        return true;
    });
    return width;
}

std::string shortenedToWidth(std::string_view displayText, std::size_t width) {
    if (displayWidth(displayText) <= width) return std::string(displayText);
    const std::string_view ellipsis = localeIsUnicode() ? "…" : "...";
    const std::size_t room = width - std::min(width, displayWidth(ellipsis));
    std::size_t used = 0;
    std::size_t kept = 0;
    forEachCharacter(displayText, [&](wchar_t character, std::string_view bytes) {
        used += widthOf(character);
        if (used > room) return false;
        kept += bytes.size();
        return true;
    });
    return std::string(displayText.substr(0, kept)) + std::string(ellipsis);
}

}  // namespace korvogit
