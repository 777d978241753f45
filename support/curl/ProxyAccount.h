// The account in a proxy's URL.

#pragma once

#include <string>

namespace rkt {

/// Whether libcurl can sign in to a proxy as its URL says, or need not. When it cannot decode the
/// user or the password (a control character is in it), libcurl goes on without the proxy and says
/// nothing; whoever set a proxy must not be passed by.
bool isProxyAccountUsable(const std::string& proxy);

/// An "@" ends user information; somebody may have percent-encoded it.
bool mayHoldProxyAccount(const std::string& proxy);

}  // namespace rkt
