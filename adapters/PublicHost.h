// What the adapters of public services have in common.

#ifndef KORVOGITSERVICE_ADAPTERS_PUBLICHOST_H
#define KORVOGITSERVICE_ADAPTERS_PUBLICHOST_H

#include <string_view>
#include <vector>

#include "KorvoGitService/RKTServiceCredentials.h"
#include "KorvoGitService/RKTURL.h"
#include "KorvoGitService/RKTURLComponents.h"

namespace rkt {

/// "https", the host, its usual port, and the path, which is empty or begins with "/".
RKTURLComponents componentsForHost(const char* host, std::string_view path);
RKTURL URLForHost(const char* host, std::string_view path);

/// The OAuth2 authorize parameter "login" with the credentials' user, when there is one: the
/// service then suggests that account. No items otherwise.
std::vector<RKTURLQueryItem> loginItems(const RKTServiceCredentials& credentials);

}  // namespace rkt

#endif
