#include "OAuthApplication.h"

#include <algorithm>

namespace emulator {

namespace {

/// Without the port when the host is a loopback address.
std::string comparable(std::string_view url) {
    for (const std::string_view loopback :
         {"http://127.0.0.1", "http://[::1]", "http://localhost"}) {
        if (url.starts_with(loopback) && url.substr(loopback.size()).starts_with(':')) {
            const auto path = std::min(url.find('/', loopback.size()), url.size());
            return std::string(loopback) + std::string(url.substr(path));
        }
    }
    return std::string(url);
}

}  // namespace

bool OAuthApplication::allows(std::string_view redirectURL) const {
    return std::ranges::any_of(callbacks, [&](const std::string& callback) {
        return comparable(redirectURL) == comparable(callback);
    });
}

std::vector<OAuthApplication> OAuthApplication::demo() {
    const std::vector<std::string> callbacks{"http://127.0.0.1/callback", "myapp://oauth/callback"};
    return {{"demo-client", "demo-secret", "Demo Application", callbacks, false},
            {"demo-client-expiring", "demo-secret-expiring", "Cautious Demo Application", callbacks,
             true}};
}

}  // namespace emulator
