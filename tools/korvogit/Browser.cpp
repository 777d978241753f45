#include "Browser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace korvogit {

namespace {

constexpr std::string_view addressParameter = "\"$1\"";

/// The program's environment without its own variables, which may hold secrets.
std::vector<char*> environmentOfOthers() {
    std::vector<char*> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (!std::string_view(*variable).starts_with("KORVOGIT_")) variables.push_back(*variable);
    }
    variables.push_back(nullptr);
    return variables;
}

/// How the process is to begin: in a session of its own, with no signal blocked, without our
/// standard streams.
class Beginning {
public:
    Beginning() {
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setflags(
            &attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawn_file_actions_init(&actions);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
        }
    }
    ~Beginning() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    Beginning(const Beginning&) = delete;
    Beginning& operator=(const Beginning&) = delete;

    posix_spawnattr_t attributes = {};
    posix_spawn_file_actions_t actions = {};
};

/// The process, or -1 when the program does not exist.
pid_t start(std::vector<std::string> words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    auto environment = environmentOfOthers();
    const Beginning beginning;
    pid_t process = -1;
    const int error = posix_spawnp(&process, arguments[0], &beginning.actions,
                                   &beginning.attributes, arguments.data(), environment.data());
    return error == 0 ? process : -1;
}

/// The command with the address in the place of each "%s", or at its end. Commands may hold
/// options, so a shell takes them apart; the address is its first parameter and not its matter.
std::string withAddress(std::string command) {
    bool isPlaced = false;
    // Where quotes stand around it, they are replaced too, so that nothing is quoted twice.
    for (const std::string_view place : {"'%s'", "\"%s\"", "%s"}) {
        for (std::size_t at = 0; (at = command.find(place, at)) != std::string::npos;) {
            command.replace(at, place.size(), addressParameter);
            at += addressParameter.size();
            isPlaced = true;
        }
    }
    return isPlaced ? command : command + " " + std::string(addressParameter);
}

/// Tries the commands between the colons, one after the other, until one succeeds.
std::string scriptFor(std::string_view commands) {
    std::string script = "false";
    while (!commands.empty()) {
        const auto command = commands.substr(0, commands.find(':'));
        commands.remove_prefix(std::min(command.size() + 1, commands.size()));
        if (!command.empty()) script += " || {\n" + withAddress(std::string(command)) + "\n}";
    }
    return script;
}

}  // namespace

Browser::Browser(const std::string& url) {
    const char* command = std::getenv("BROWSER");
    if (command != nullptr && *command != '\0') {
        process_ = start({"/bin/sh", "-c", scriptFor(command), "sh", url});
    } else {
        process_ = start({"xdg-open", url});
    }
    failed_ = process_ < 0;
    // Not by sys/pidfd.h, which in glibc 2.36 gives its functions C++ names.
    if (!failed_) descriptor_ = static_cast<int>(syscall(SYS_pidfd_open, process_, 0));
}

Browser::~Browser() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool Browser::hasFailed() {
    int status = 0;
    if (process_ >= 0 && waitpid(process_, &status, WNOHANG) == process_) {
        failed_ = status != 0;
        process_ = -1;
        if (descriptor_ >= 0) close(descriptor_);
        descriptor_ = -1;
    }
    return failed_;
}

}  // namespace korvogit
