#include "tests/helpers/HTTP2Front.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

extern char** environ;

namespace {

// nghttpx takes a number and does not tell one that it chose.
std::uint16_t freePort() {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    const bool bound =
        bind(descriptor, generic, size) == 0 && getsockname(descriptor, generic, &size) == 0;
    close(descriptor);
    if (!bound) throw std::runtime_error("no free port");
    return ntohs(address.sin_port);
}

}  // namespace

HTTP2Front::HTTP2Front(const emulator::CertificateAuthority& authority, std::uint16_t httpPort)
    : port_(freePort()) {
    writeIdentity(authority.makeLeaf(emulator::Leaf::Valid));
    spawn(httpPort);
    waitUntilListening();
}

HTTP2Front::~HTTP2Front() {
    end();
    if (log_ >= 0) close(log_);
}

void HTTP2Front::end() {
    if (process_ <= 0) return;
    kill(process_, SIGKILL);
    waitpid(std::exchange(process_, -1), nullptr, 0);
}

// A line is written when an answer is complete, which its client may know a little earlier; nghttpx
// tells nobody when it has written one, so the file is looked at, for twenty seconds at most.
std::vector<bool> HTTP2Front::resumptions(std::size_t requests) const {
    std::vector<bool> resumptions;
    for (int looks = 0; resumptions.size() < requests; ++looks) {
        if (looks == 2000) throw std::runtime_error("nghttpx does not tell what it answered");
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::ifstream log(directory_.path() / "answered");
        resumptions.clear();
        for (std::string line; std::getline(log, line);) resumptions.push_back(line == "h2 r");
    }
    return resumptions;
}

void HTTP2Front::writeIdentity(const emulator::Identity& identity) const {
    std::ofstream(directory_.path() / "certificate.pem") << identity.certificates;
    std::ofstream(directory_.path() / "key.pem") << identity.privateKey;
}

void HTTP2Front::spawn(std::uint16_t httpPort) {
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    log_ = pipe[0];
    std::vector<std::string> arguments{
        "nghttpx",
        "--max-request-header-fields=2000",
        "--conf=/dev/null",
        "--single-process",
        "--log-level=NOTICE",
        "--no-ocsp",
        "--add-forwarded=for",
        "--accesslog-format=$alpn $tls_session_reused",
        "--accesslog-file=" + (directory_.path() / "answered").string(),
        "--frontend=127.0.0.1," + std::to_string(port_),
        "--backend=127.0.0.1," + std::to_string(httpPort),
        (directory_.path() / "key.pem").string(),
        (directory_.path() / "certificate.pem").string()};
    std::vector<char*> pointers;
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], STDERR_FILENO);
    const int failure =
        posix_spawnp(&process_, "nghttpx", &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipe[1]);
    if (failure != 0) throw std::runtime_error("nghttpx (package nghttp2-proxy) cannot be started");
}

// It says in its log that it listens; the pipe holds whatever else it says later.
void HTTP2Front::waitUntilListening() {
    std::string said;
    std::array<char, 1024> buffer{};
    pollfd waiting{log_, POLLIN, 0};
    while (said.find("Listening on") == std::string::npos) {
        if (poll(&waiting, 1, 20'000) <= 0) throw std::runtime_error("nghttpx does not listen");
        const auto count = read(log_, buffer.data(), buffer.size());
        if (count <= 0) throw std::runtime_error("nghttpx ended: " + said);
        said.append(buffer.data(), static_cast<std::size_t>(count));
    }
}
