// A real browser, without a window.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/helpers/TemporaryFolder.h"

/// Debian's Chromium, driven over a pair of pipes by the DevTools protocol: it ends with them.
/// Everything that it does waits for the browser's own events; nothing is waited for longer than
/// a patient person would.
class Chromium {
public:
    /// @param port     where github.com and bitbucket.org are; there is no other host
    /// @param keyHash  base64 of the SHA-256 of the public key that these hosts show
    /// @throws std::runtime_error when it does not start
    Chromium(std::uint16_t port, const std::string& keyHash);
    ~Chromium();
    Chromium(const Chromium&) = delete;
    Chromium& operator=(const Chromium&) = delete;

    void open(const std::string& url);
    /// Waits until a page with this title has loaded.
    /// @throws std::runtime_error with what the browser shows instead
    void waitForTitle(const std::string& title);
    /// Presses what the CSS selector finds.
    void press(const std::string& selector);
    std::string text();
    std::string html();

private:
    using json = nlohmann::json;

    void start(std::uint16_t port, const std::string& keyHash);
    void stop();
    /// The command's result; null when the browser refused it, as it does between two pages.
    json command(const std::string& method, const json& parameters);
    json evaluate(const std::string& expression);
    json receive();
    std::string log() const;

    const rkt::tests::TemporaryFolder profile_;
    pid_t process_ = -1;
    int toBrowser_ = -1;
    int fromBrowser_ = -1;
    std::string received_;
    std::string session_;
    int lastCommand_ = 0;
    std::size_t pagesLoaded_ = 0;
};

/// The hash of the public key that an HTTPS server on this port of 127.0.0.1 shows.
std::string shownKeyHash(std::uint16_t port);
