#include "Authorization.h"

#include "Digest.h"

namespace emulator {

Authorization readAuthorization(const Request& request) {
    const auto header = request.headers.get("Authorization");
    if (!header) {
        return {};
    }
    const auto blank = std::min(header->find(' '), header->size());
    const auto scheme = std::string_view(*header).substr(0, blank);
    const auto rest = header->substr(std::min(blank + 1, header->size()));
    if (equalIgnoringCase(scheme, "Basic")) {
        const auto pair = base64Decoded(rest);
        const auto colon = std::min(pair.find(':'), pair.size());
        return {Authorization::Scheme::Basic, pair.substr(0, colon),
                pair.substr(std::min(colon + 1, pair.size()))};
    }
    if (equalIgnoringCase(scheme, "Bearer") || equalIgnoringCase(scheme, "token")) {
        return {Authorization::Scheme::Bearer, "", rest};
    }
    return {Authorization::Scheme::Unknown, "", ""};
}

const Account* accountWith(const Authorization& authorization, const Accounts& accounts,
                           std::int64_t now) {
    const auto* owner = accounts.withToken(authorization.secret, now).account;
    if (authorization.scheme != Authorization::Scheme::Basic) {
        return owner;
    }
    const auto* named = accounts.withLogin(authorization.user);
    const bool right =
        named != nullptr &&
        (named == owner || (!named->password.empty() && named->password == authorization.secret));
    return right ? named : nullptr;
}

}  // namespace emulator
