#include "tests/browser/Chromium.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/korvogit-emulator/Digest.h"

namespace {

constexpr int patience = 90'000;  // milliseconds, for each message of the browser
constexpr int patienceToEnd = 10'000;

std::pair<int, int> makePipe() {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    return {ends[0], ends[1]};
}

std::vector<std::string> argumentsFor(std::uint16_t port, const std::string& keyHash,
                                      const std::filesystem::path& profile) {
    const std::string address = "127.0.0.1:" + std::to_string(port);
    return {CHROMIUM_PROGRAM,
            "--headless",
            "--remote-debugging-pipe",
            "--no-sandbox",  // which there cannot be for root
            "--disable-gpu",
            "--disable-dev-shm-usage",
            "--no-first-run",
            "--disable-background-networking",
            "--disable-component-update",
            "--disable-extensions",
            "--disable-sync",
            "--password-store=basic",
            "--user-data-dir=" + profile.string(),
            "--host-resolver-rules=MAP github.com:443 " + address + ",MAP bitbucket.org:443 " +
                address + ",MAP * ~NOTFOUND,EXCLUDE 127.0.0.1",
            "--ignore-certificate-errors-spki-list=" + keyHash,
            "about:blank"};
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

Chromium::Chromium(std::uint16_t port, const std::string& keyHash) {
    std::signal(SIGPIPE, SIG_IGN);  // a browser that is gone is an error of write(2)
    try {
        start(port, keyHash);
        const auto target = command("Target.createTarget", {{"url", "about:blank"}});
        const auto attached = command("Target.attachToTarget",
                                      {{"targetId", target.at("targetId")}, {"flatten", true}});
        session_ = attached.at("sessionId");
        command("Page.enable", json::object());
    } catch (...) {
        stop();
        throw;
    }
}

Chromium::~Chromium() {
    stop();
}

void Chromium::start(std::uint16_t port, const std::string& keyHash) {
    const auto [commandsEnd, toBrowser] = makePipe();
    toBrowser_ = toBrowser;
    const auto [fromBrowser, answersEnd] = makePipe();
    fromBrowser_ = fromBrowser;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const std::string logFile = profile_.path() / "log";
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, logFile.c_str(), O_WRONLY | O_CREAT,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    // Descriptors 3 and 4 are the browser's; ours may have these numbers until they are moved away.
    const int commandsCopy = fcntl(commandsEnd, F_DUPFD_CLOEXEC, 10);
    const int answersCopy = fcntl(answersEnd, F_DUPFD_CLOEXEC, 10);
    posix_spawn_file_actions_adddup2(&actions, commandsCopy, 3);
    posix_spawn_file_actions_adddup2(&actions, answersCopy, 4);
    posix_spawn_file_actions_addclosefrom_np(&actions, 5);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);

    auto arguments = argumentsFor(port, keyHash, profile_.path());
    std::vector<std::string> environment = {"HOME=" + profile_.path().string(),
                                            "PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8"};
    const int error = posix_spawn(&process_, CHROMIUM_PROGRAM, &actions, &attributes,
                                  pointersTo(arguments).data(), pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    for (const int end : {commandsEnd, answersEnd, commandsCopy, answersCopy}) close(end);
    if (error != 0) throw std::system_error(error, std::generic_category(), CHROMIUM_PROGRAM);
}

void Chromium::stop() {
    // The browser ends when its pipes do.
    for (const int descriptor : {toBrowser_, fromBrowser_}) {
        if (descriptor >= 0) close(descriptor);
    }
    if (process_ > 0) {
        pollfd ended = {static_cast<int>(syscall(SYS_pidfd_open, process_, 0)), POLLIN, 0};
        poll(&ended, 1, patienceToEnd);
        close(ended.fd);
        kill(-process_, SIGKILL);  // with whatever is left of its session
        waitpid(process_, nullptr, 0);
    }
}

std::string Chromium::log() const {
    std::ifstream file(profile_.path() / "log");
    return {std::istreambuf_iterator<char>(file), {}};
}

// Messages are JSON texts that end with a NUL byte.
Chromium::json Chromium::receive() {
    auto end = received_.find('\0');
    while (end == std::string::npos) {
        pollfd descriptor = {fromBrowser_, POLLIN, 0};
        std::array<char, 65536> bytes = {};
        ssize_t count = 0;
        if (poll(&descriptor, 1, patience) == 1) {
            count = read(fromBrowser_, bytes.data(), bytes.size());
        }
        if (count <= 0) throw std::runtime_error("the browser says nothing any more: " + log());
        received_.append(bytes.data(), static_cast<std::size_t>(count));
        end = received_.find('\0');
    }
    auto message = json::parse(received_.substr(0, end));
    received_.erase(0, end + 1);
    if (message.value("method", "") == "Page.loadEventFired") ++pagesLoaded_;
    return message;
}

Chromium::json Chromium::command(const std::string& method, const json& parameters) {
    json message = {{"id", ++lastCommand_}, {"method", method}, {"params", parameters}};
    if (!session_.empty()) message["sessionId"] = session_;
    const std::string text = message.dump() + '\0';
    if (write(toBrowser_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("the browser does not listen any more: " + log());
    }
    while (true) {
        const auto answer = receive();
        if (answer.value("id", 0) == lastCommand_) return answer.value("result", json());
    }
}

Chromium::json Chromium::evaluate(const std::string& expression) {
    const auto result =
        command("Runtime.evaluate", {{"expression", expression}, {"returnByValue", true}});
    return result.is_null() ? json() : result.at("result").value("value", json());
}

void Chromium::open(const std::string& url) {
    command("Page.navigate", {{"url", url}});
}

void Chromium::waitForTitle(const std::string& title) {
    try {
        while (true) {
            const auto before = pagesLoaded_;
            if (evaluate("document.readyState == 'complete' ? document.title : ''") == title) {
                return;
            }
            while (pagesLoaded_ == before) receive();
        }
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("no page \"" + title + "\": " + error.what());
    }
}

void Chromium::press(const std::string& selector) {
    evaluate("document.querySelector(" + json(selector).dump() + ").click()");
}

std::string Chromium::text() {
    return evaluate("document.body.innerText").get<std::string>();
}

std::string Chromium::html() {
    return evaluate("document.documentElement.outerHTML").get<std::string>();
}

std::string shownKeyHash(std::uint16_t port) {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(
        SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> connection(
        BIO_new_ssl_connect(context.get()), BIO_free_all);
    const std::string address = "127.0.0.1:" + std::to_string(port);
    BIO_set_conn_hostname(connection.get(), address.c_str());
    if (BIO_do_handshake(connection.get()) != 1) throw std::runtime_error("no TLS at " + address);
    SSL* ssl = nullptr;
    BIO_get_ssl(connection.get(), &ssl);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(SSL_get1_peer_certificate(ssl),
                                                                  X509_free);
    unsigned char* encoded = nullptr;
    const int length = i2d_X509_PUBKEY(X509_get_X509_PUBKEY(certificate.get()), &encoded);
    std::string digest(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    EVP_Digest(encoded, static_cast<std::size_t>(length),
               reinterpret_cast<unsigned char*>(digest.data()), &size, EVP_sha256(), nullptr);
    OPENSSL_free(encoded);
    digest.resize(size);
    return emulator::base64(digest);
}
