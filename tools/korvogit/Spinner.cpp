#include "Spinner.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "DisplayText.h"
#include "StandardStreams.h"
#include "Terminal.h"

namespace korvogit {

namespace {

constexpr std::array braille = {"⠋", "⠙", "⠹", "⠸", "⠼", "⠴", "⠦", "⠧", "⠇", "⠏"};
constexpr std::array ascii = {"|", "/", "-", "\\"};

// An answer that comes at once shows no spinner, which would only flicker.
constexpr int millisecondsBeforeTheFirstTurn = 200;
constexpr int millisecondsBetweenTurns = 80;

}  // namespace

Spinner::Spinner(std::string text, bool wanted)
    : text_(std::move(text)), spins_(wanted && Terminal::of(STDERR_FILENO).movesCursor) {}

int Spinner::timeout() const {
    if (!spins_) return -1;
    return turns_ == 0 ? millisecondsBeforeTheFirstTurn : millisecondsBetweenTurns;
}

void Spinner::turn() {
    if (!spins_) return;
    const char* picture =
        localeIsUnicode() ? braille[turns_ % braille.size()] : ascii[turns_ % ascii.size()];
    ++turns_;
    isShown_ = true;
    std::string line = std::string(picture) + " " + text_;
    // A line that wraps could not be erased.
    if (const auto width = Terminal::of(STDERR_FILENO).width) {
        line = shortenedToWidth(line, *width - std::min<std::size_t>(*width, 1));
    }
    writeError("\r" + line);
}

void Spinner::say(std::string text) {
    hide();
    text_ = std::move(text);
    turn();
}

void Spinner::hide() {
    if (isShown_) writeError("\r\033[K");
    isShown_ = false;
}

void Spinner::stop() {
    hide();
    spins_ = false;
}

}  // namespace korvogit
