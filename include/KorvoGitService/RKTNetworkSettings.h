// How the process reaches the network.

#ifndef KORVOGITSERVICE_RKTNETWORKSETTINGS_H
#define KORVOGITSERVICE_RKTNETWORKSETTINGS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "KorvoGitService/RKTExport.h"

/// Settings of a session's transfers. Set the process-wide ones before the first service is made: a
/// session takes a copy when it is made and is not changed afterwards (the shared session alone
/// follows them, request by request). They come from code only: proxy variables of the environment,
/// .netrc and the like are not read. That a certificate and its host name are checked cannot be
/// switched off.
struct RKT_EXPORT RKTNetworkSettings {
    /// Connects to another address than the name says, as for a test origin; the request, the Host
    /// header and the certificate check keep the name.
    struct HostMapping {
        /// The name in the request's address, in any letter case; an international one as it is
        /// looked up ("xn--bcher-kva.example"), an IPv6 address without its zone, with brackets or
        /// without. An empty one fits no address.
        std::string host;
        /// The port in the request's address, or its scheme's own.
        std::uint16_t port = 443;
        /// An IP address or a name that is looked up in the other's place. Empty: the name itself.
        std::string address;
        /// Where to connect to.
        std::uint16_t addressPort = 443;
        bool operator==(const HostMapping&) const = default;
    };

    /// The proxy's URL (http, https, socks5, socks5h; user information is used to sign in to the
    /// proxy). Nothing or empty: a direct connection.
    std::optional<std::string> proxy;
    /// A PEM file with the certificate authorities to trust instead of the system's. Nothing: the
    /// system's.
    std::optional<std::string> certificateAuthorityFile;
    /// Empty: every name is looked up.
    std::vector<HostMapping> hostMappings;

    /// The longest time without a byte, while connecting and waiting too, for one of
    /// maximumConnectionsPerOrigin among others; every byte restarts it, one that is sent up to an
    /// eighth of it late.
    /// Of a host's several addresses one that is silent gets half of it before the next is tried.
    /// 60 s is the field's habit: longer than a slow page takes, short enough for a person to wait.
    /// Both times count as a millisecond at least and ten years at most.
    std::chrono::milliseconds timeoutIntervalForRequest = std::chrono::seconds(60);
    /// The longest time for all of a task.
    std::chrono::milliseconds timeoutIntervalForResource = std::chrono::hours(24 * 7);
    /// The longest body, in bytes, before and after decoding. A hundred times the largest page of
    /// any service; above it a server can only be broken or hostile.
    std::size_t maximumBodySize = std::size_t{256} << 20;

    /// Of the process, taken from the shared settings: how many connections go to one origin, and
    /// how many there may be in all when one becomes free for it to be kept open (0 counts as 1).
    /// An HTTP/2 connection carries many requests at once.
    std::uint32_t maximumConnectionsPerOrigin = 32;
    /// See above.
    std::uint32_t maximumIdleConnections = 64;

    bool operator==(const RKTNetworkSettings&) const = default;

    /// The process-wide settings; safe from any thread.
    static RKTNetworkSettings shared();
    /// Replaces all of them. Sessions that exist keep theirs, the shared session alone follows.
    static void setShared(RKTNetworkSettings settings);
};

#endif
