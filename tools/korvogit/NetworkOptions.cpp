#include "NetworkOptions.h"

#include <KorvoGitService/RKTURL.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace korvogit {

namespace {

using HostMapping = RKTNetworkSettings::HostMapping;

/// Takes a host name or an address off the beginning, up to the next colon; an IPv6 address has
/// brackets, which stay.
std::optional<std::string> takeHost(std::string_view& text) {
    std::size_t end = text.find(':');
    if (text.starts_with('[')) {
        end = text.find(']');
        if (end == std::string_view::npos || end == 1) return std::nullopt;
        ++end;
    }
    if (end == 0 || end >= text.size() || text[end] != ':') return std::nullopt;
    std::string host(text.substr(0, end));
    text.remove_prefix(end + 1);
    return host;
}

/// Takes a port off the beginning, up to the next colon or to the end.
std::optional<std::uint16_t> takePort(std::string_view& text) {
    std::uint16_t port = 0;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const auto [rest, error] = std::from_chars(begin, end, port);
    if (error != std::errc() || port == 0 || (rest != end && *rest != ':')) return std::nullopt;
    text.remove_prefix(std::min(static_cast<std::size_t>(rest - begin) + 1, text.size()));
    return port;
}

HostMapping parseHostMapping(std::string_view text) {
    const auto host = takeHost(text);
    const auto port = host ? takePort(text) : std::nullopt;
    const auto address = port ? takeHost(text) : std::nullopt;
    const auto addressPort = address ? takePort(text) : std::nullopt;
    if (!addressPort || !text.empty()) {
        throw CLI::ValidationError(
            "--connect-to",
            "must be HOST:PORT:ADDRESS:PORT, with brackets around an IPv6 address, such as "
            "api.github.com:443:127.0.0.1:8443");
    }
    return {*host, *port, *address, *addressPort};
}

std::chrono::milliseconds parseTimeout(const std::string& text) {
    double seconds = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    constexpr double longest = 7.0 * 24 * 60 * 60;
    if (error != std::errc() || rest != end || !(seconds > 0) || seconds > longest) {
        throw CLI::ValidationError(
            "--timeout", "must be a number of seconds above 0 and at most a week, such as 2.5");
    }
    // Rounded up, so that the shortest time is not none.
    return std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(seconds * 1000)));
}

std::string parseCertificateAuthorityFile(const std::string& path) {
    errno = 0;
    std::ifstream file(path);
    // A folder can be opened, but nothing can be read from it.
    if (!file || file.peek() == std::ifstream::traits_type::eof()) {
        const std::string reason =
            errno != 0 ? std::generic_category().message(errno) : "it is empty";
        throw CLI::ValidationError("--cacert", "cannot read " + path + ": " + reason);
    }
    // It is read for each connection, and what is a pipe has been emptied by now.
    std::error_code gone;
    if (!std::filesystem::is_regular_file(path, gone)) {
        throw CLI::ValidationError("--cacert", path + " must be a file that can be read again");
    }
    return path;
}

std::string parseProxy(const std::string& text) {
    constexpr std::array<std::string_view, 4> schemes = {"http", "https", "socks5", "socks5h"};
    const auto url = RKTURL::URLWithString(text);
    const auto scheme = url ? url->scheme() : std::nullopt;
    const auto host = url ? url->host() : std::nullopt;
    const bool known =
        std::ranges::find(schemes, CLI::ignore_case(scheme.value_or(""))) != schemes.end();
    if (!known || !host || host->empty()) {
        // The text is not repeated: it may hold a password.
        throw CLI::ValidationError("--proxy",
                                   "must be a URL with http, https, socks5 or socks5h, such as "
                                   "http://proxy.example.com:3128");
    }
    return text;
}

}  // namespace

NetworkOptions::NetworkOptions(CLI::App& command) {
    const auto add = [&command](const char* name, auto take, const char* description) {
        return command.add_option_function<std::string>(name, take, description)->group("Network");
    };
    add(
        "--cacert",
        [this](const std::string& text) {
            settings_.certificateAuthorityFile = parseCertificateAuthorityFile(text);
        },
        "PEM file of the authorities to trust, not the system's")
        ->type_name("FILE");
    command
        .add_option_function<std::vector<std::string>>(
            "--connect-to",
            [this](const std::vector<std::string>& texts) {
                for (const auto& text : texts) {
                    settings_.hostMappings.push_back(parseHostMapping(text));
                }
            },
            "Connect there for that host; may be repeated")
        ->group("Network")
        ->type_name("HOST:PORT:ADDRESS:PORT")
        ->allow_extra_args(false);
    add(
        "--proxy", [this](const std::string& text) { settings_.proxy = parseProxy(text); },
        "Proxy to go through")
        ->type_name("URL");
    add(
        "--timeout",
        [this](const std::string& text) {
            settings_.timeoutIntervalForRequest = parseTimeout(text);
        },
        "Longest time without a byte; default: 60")
        ->type_name("SECONDS");
}

}  // namespace korvogit
