#include "tests/helpers/Program.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <initializer_list>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

int checked(int result, const char* what) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), what);
    return result;
}

int memoryFile(const std::string& content = {}) {
    const int file = checked(memfd_create("test", MFD_CLOEXEC), "memfd_create");
    for (std::size_t written = 0; written < content.size();) {
        const auto count = write(file, content.data() + written, content.size() - written);
        written += static_cast<std::size_t>(checked(static_cast<int>(count), "write"));
    }
    checked(static_cast<int>(lseek(file, 0, SEEK_SET)), "lseek");
    return file;
}

std::string contentOf(int file) {
    std::string content;
    std::array<char, 65536> bytes;
    ssize_t count = 0;
    while ((count = pread(file, bytes.data(), bytes.size(), static_cast<off_t>(content.size()))) >
           0) {
        content.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return content;
}

std::vector<std::string> environmentOf(const Launch& launch) {
    static constexpr std::array<std::string_view, 6> left = {
        "KORVOGIT_", "LC_", "LANG=", "LANGUAGE=", "TERM=", "NO_COLOR="};
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (std::ranges::none_of(left, [&](auto start) { return text.starts_with(start); })) {
            variables.emplace_back(text);
        }
    }
    std::map<std::string, std::string> wanted = launch.environment;
    wanted.try_emplace("LC_ALL", "C.UTF-8");
    wanted.try_emplace("TERM", "xterm");
    for (const auto& [name, value] : wanted) variables.push_back(name + "=" + value);
    return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What posix_spawn(3) does to the new process before the program begins.
class Preparation {
public:
    Preparation() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~Preparation() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;

    void useTerminal(const char* name, bool neverBlocks) {
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
        // The first terminal that a new session opens becomes its controlling one.
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, name,
                                         O_RDWR | (neverBlocks ? O_NONBLOCK : 0), 0);
        posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

/// A descriptor for what writes to a pipe that nobody reads, or to a full disk.
int refusingOutput(Launch::Output output) {
    if (output == Launch::Output::FullDevice) return open("/dev/full", O_WRONLY | O_CLOEXEC);
    std::array<int, 2> ends = {};
    checked(pipe2(ends.data(), O_CLOEXEC), "pipe2");
    close(ends[0]);
    return ends[1];
}

}  // namespace

Program::Program(const Launch& launch) {
    Preparation preparation;
    const int input = memoryFile(launch.input);
    if (launch.terminalColumns) {
        openTerminal(*launch.terminalColumns);
        preparation.useTerminal(ptsname(terminal_), launch.terminalNeverBlocks);
    } else {
        const bool captured = launch.output == Launch::Output::Captured;
        output_ = captured ? memoryFile() : refusingOutput(launch.output);
        error_ = memoryFile();
        auto* actions = &preparation.actions;
        posix_spawn_file_actions_adddup2(actions, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(actions, output_, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(actions, error_, STDERR_FILENO);
        if (launch.output == Launch::Output::Closed) {
            posix_spawn_file_actions_addclose(actions, STDOUT_FILENO);
        }
    }
    // The sockets of a server in this process are not the program's.
    posix_spawn_file_actions_addclosefrom_np(&preparation.actions, STDERR_FILENO + 1);

    std::vector<std::string> arguments = launch.arguments;
    arguments.insert(arguments.begin(), launch.program);
    std::vector<std::string> environment = environmentOf(launch);
    const int error = posix_spawn(&process_, launch.program.c_str(), &preparation.actions,
                                  &preparation.attributes, pointersTo(arguments).data(),
                                  pointersTo(environment).data());
    close(input);
    if (error != 0) throw std::system_error(error, std::generic_category(), launch.program);
    // Not by sys/pidfd.h, which in glibc 2.36 gives its functions C++ names.
    processDescriptor_ =
        checked(static_cast<int>(syscall(SYS_pidfd_open, process_, 0)), "pidfd_open");
}

Program::~Program() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    for (const int descriptor : {terminal_, programSide_, output_, error_, processDescriptor_}) {
        if (descriptor >= 0) close(descriptor);
    }
}

void Program::openTerminal(unsigned short columns) {
    winsize size = {};
    size.ws_col = columns;
    size.ws_row = 24;
    // Held open on this side, so that the terminal exists before the program opens it.
    checked(openpty(&terminal_, &programSide_, nullptr, nullptr, &size), "openpty");
    fcntl(terminal_, F_SETFD, FD_CLOEXEC);
    fcntl(programSide_, F_SETFD, FD_CLOEXEC);
}

void Program::signal(int number) const {
    kill(process_, number);
}

void Program::type(const std::string& keys) const {
    checked(static_cast<int>(write(terminal_, keys.data(), keys.size())), "write");
}

void Program::waitUntilShown(const std::string& text) {
    while (shown_.find(text) == std::string::npos) {
        if (!advance()) throw std::runtime_error("the program ended; it has shown: " + shown_);
    }
}

// Nothing becomes readable when a program goes to sleep: it is looked at again and again.
void Program::waitUntilAsleep() const {
    pollfd process = {processDescriptor_, POLLIN, 0};
    while (!sleeps() && poll(&process, 1, 1) == 0) {
        if (std::chrono::steady_clock::now() > deadline_) {
            throw std::runtime_error("the program does not wait");
        }
    }
}

/// Its first thread.
bool Program::sleeps() const {
    std::ifstream file("/proc/" + std::to_string(process_) + "/stat");
    std::string status;
    std::getline(file, status);
    const auto state = status.rfind(')') + 2;
    return state < status.size() && status[state] == 'S';
}

bool Program::advance() {
    using std::chrono::milliseconds;
    const auto left =
        std::chrono::duration_cast<milliseconds>(deadline_ - std::chrono::steady_clock::now());
    std::array<pollfd, 2> waited = {{{processDescriptor_, POLLIN, 0}, {terminal_, POLLIN, 0}}};
    const int timeout = static_cast<int>(std::max(left, milliseconds(0)).count());
    if (poll(waited.data(), waited.size(), timeout) < 1) {
        throw std::runtime_error("the program takes too long; it has shown: " + shown_);
    }
    return waited[1].revents == 0 ? waited[0].revents == 0 : takeFromTerminal();
}

bool Program::takeFromTerminal() {
    std::array<char, 4096> bytes;
    const auto count = read(terminal_, bytes.data(), bytes.size());
    if (count > 0) shown_.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0;
}

Ended Program::wait() {
    while (advance()) {
    }
    int state = 0;
    waitpid(process_, &state, 0);
    process_ = -1;
    Ended ended;
    ended.status = WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
    if (terminal_ < 0) {
        ended.output = contentOf(output_);
        ended.error = contentOf(error_);
        return ended;
    }
    termios modes = {};
    tcgetattr(terminal_, &modes);
    ended.terminalEchoes = (modes.c_lflag & ECHO) != 0;
    // With nobody on its other side, what the terminal still has to show comes to an end.
    close(std::exchange(programSide_, -1));
    while (takeFromTerminal()) {
    }
    ended.output = shown_;
    return ended;
}

Ended run(const Launch& launch) {
    return Program(launch).wait();
}
