#include "StandardStreams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "DisplayText.h"
#include "Terminal.h"

namespace korvogit {

namespace {

/// The error's number, 0 when everything was written.
int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {  // who shares the descriptor made it so
            pollfd writable = {descriptor, POLLOUT, 0};
            poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

/// Appends what standard input has, and waits for it; false at its end, and when the other
/// descriptor is readable.
bool readMore(std::string& text, int unless) {
    std::array<char, 4096> bytes;
    while (true) {
        std::array<pollfd, 2> waited = {{{STDIN_FILENO, POLLIN, 0}, {unless, POLLIN, 0}}};
        if (poll(waited.data(), waited.size(), -1) < 0 && errno == EINTR) continue;
        if (waited[1].revents != 0) return false;
        const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count > 0) text.append(bytes.data(), static_cast<std::size_t>(count));
        // Refused: who shares the descriptor was faster, and made it so.
        if (count >= 0 || (errno != EAGAIN && errno != EINTR)) return count > 0;
    }
}

}  // namespace

void occupyStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) >= 0) continue;
        // open() takes the lowest free number, which is this one. Reading from it ends at once,
        // writing to it is refused.
        if (open("/dev/null", O_RDONLY) != descriptor) _exit(1);
    }
}

void writeOutput(std::string_view text) {
    const int error = writeAll(STDOUT_FILENO, text);
    if (error == 0) return;
    if (error == EPIPE) throw OutputError("");
    throw OutputError("The output could not be written: " + std::generic_category().message(error) +
                      ".");
}

std::string readLine(std::size_t longest, int unless) {
    std::string text;
    while (text.find('\n') == std::string::npos && text.size() <= longest &&
           readMore(text, unless)) {
    }
    return text;
}

void complain(std::string_view sentence, const std::vector<std::string>& below) {
    const Terminal terminal = Terminal::of(STDERR_FILENO);
    std::string text =
        terminal.styled("korvogit:", Style::Bad) + " " + displayText(sentence) + "\n";
    for (const auto& line : below) {
        if (!line.empty()) text += "  " + displayText(line) + "\n";
    }
    writeError(text);
}

void hint(std::string_view sentence) {
    const Terminal terminal = Terminal::of(STDERR_FILENO);
    if (!terminal.isTerminal) return;
    writeError(terminal.styled("hint: " + displayText(sentence), Style::Faint) + "\n");
}

void writeError(std::string_view text) {
    writeAll(STDERR_FILENO, text);
}

}  // namespace korvogit
