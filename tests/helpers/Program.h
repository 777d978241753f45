// Programs, run as a shell runs them.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// How to start a program.
struct Launch {
    /// Where its standard output goes when not to the test and not to a terminal.
    enum class Output { Captured, Closed, BrokenPipe, FullDevice };

    std::string program{};
    std::vector<std::string> arguments{};
    /// Besides the test's own environment, which it gets without what changes language, colours and
    /// secrets; with the locale "C.UTF-8" and the terminal type "xterm".
    std::map<std::string, std::string> environment{};
    std::string input{};
    Output output = Output::Captured;
    /// Standard input, output and error are a terminal of its own, so many columns wide.
    std::optional<unsigned short> terminalColumns{};
    /// Writing to that terminal is refused while it is full.
    bool terminalNeverBlocks = false;
};

struct Ended {
    int status = -1;              ///< the exit status; negative: the signal that ended it
    std::string output{};         ///< with a terminal, everything that it showed
    std::string error{};          ///< standard error; with a terminal nothing
    bool terminalEchoes = false;  ///< whether its terminal shows at the end what is typed
};

/// A program that runs. No wait is longer than a test's patience; what does not end is killed.
class Program {
public:
    /// @throws std::system_error
    explicit Program(const Launch& launch);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void signal(int number) const;
    /// At its terminal.
    void type(const std::string& keys) const;
    /// Waits until its terminal has shown this text.
    /// @throws std::runtime_error when it does not come
    void waitUntilShown(const std::string& text);
    /// Waits until its first thread sleeps, or it has ended, and takes nothing from its terminal
    /// meanwhile. After it has begun with what it cannot do at once there, it was refused then.
    /// @throws std::runtime_error when it does not come to that
    void waitUntilAsleep() const;
    /// @throws std::runtime_error when the program does not end
    Ended wait();

private:
    void openTerminal(unsigned short columns);
    /// Waits for something new: takes what the terminal shows, or else returns false at the end.
    bool advance();
    bool takeFromTerminal();
    bool sleeps() const;

    std::chrono::steady_clock::time_point deadline_ =
        std::chrono::steady_clock::now() + std::chrono::minutes(2);
    std::string shown_;
    int terminal_ = -1;  // the side of whoever looks at it
    int programSide_ = -1;
    int output_ = -1;
    int error_ = -1;
    pid_t process_ = -1;
    int processDescriptor_ = -1;
};

/// Runs it to its end.
Ended run(const Launch& launch);
