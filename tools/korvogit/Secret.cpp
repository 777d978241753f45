#include "Secret.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
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

    /// What there is up to the first line's end, or to a signal.
    std::string read() const { return readLine(longestSecret, signals_.fileDescriptor()); }

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
    std::string text = SecretInput(noun).read();
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
