#include "Secret.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "Command.h"
#include "Signals.h"
#include "StandardStreams.h"

namespace korvogit {

namespace {

constexpr std::size_t longestSecret = std::size_t{64} * 1024;

void check(std::string_view secret, const std::string& noun, const std::string& origin) {
    using namespace std::string_view_literals;
    if (secret.find_first_of("\r\n\0"sv) == std::string_view::npos) return;
    throw UsageError("The " + noun + " from " + origin +
                     " has a line end or a NUL character inside, which no " + noun + " has.");
}

/// Standard input while a secret is read from it. At a terminal it asks for the secret and keeps
/// what is typed from being shown; a signal ends the program only after that was put right again.
class SecretInput {
public:
    explicit SecretInput(const std::string& noun)
        : isTerminal_(tcgetattr(STDIN_FILENO, &previous_) == 0) {
        if (!isTerminal_) return;
        termios hidden = previous_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
        std::string question = noun + ": ";
        question[0] = static_cast<char>(question[0] - 'a' + 'A');
        writeError(question);
    }
    ~SecretInput() {
        if (!isTerminal_) return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &previous_);
        writeError("\n");
    }
    SecretInput(const SecretInput&) = delete;
    SecretInput& operator=(const SecretInput&) = delete;

    /// Appends what there is; false at the end of the input and when a signal has arrived.
    bool read(std::string& text) const {
        std::array<pollfd, 2> descriptors = {
            {{STDIN_FILENO, POLLIN, 0}, {signals_.fileDescriptor(), POLLIN, 0}}};
        while (poll(descriptors.data(), descriptors.size(), -1) < 0 && errno == EINTR) {
        }
        if (descriptors[1].revents != 0) return false;
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count > 0) text.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }

private:
    SignalWatch signals_;  // goes last, and then a signal that it held back ends the program
    termios previous_ = {};
    bool isTerminal_;
};

}  // namespace

std::optional<std::string> secretFromEnvironment(const char* variable, const std::string& noun) {
    const char* value = std::getenv(variable);
    if (value == nullptr) return std::nullopt;
    check(value, noun, variable);
    return value;
}

std::string secretFromStandardInput(const std::string& noun) {
    std::string text;
    {
        const SecretInput input(noun);
        while (text.find('\n') == std::string::npos && text.size() <= longestSecret &&
               input.read(text)) {
        }
    }
    if (text.empty()) throw UsageError("There is no " + noun + " on standard input.");
    const std::size_t end = text.find('\n');
    if (std::min(end, text.size()) > longestSecret) {
        throw UsageError("The first line of standard input is too long for a " + noun + ".");
    }
    if (end != std::string::npos) {
        text.resize(end);
        if (text.ends_with('\r')) text.pop_back();
    }
    check(text, noun, "standard input");
    return text;
}

}  // namespace korvogit
