#include "OAuthGrants.h"

#include "Digest.h"

namespace emulator {

std::string OAuthGrants::makeSecret(const std::string& prefix) {
    const std::lock_guard lock(mutex_);
    return prefix + sha256(prefix + std::to_string(++made_)).substr(0, 40);
}

void OAuthGrants::keep(const std::string& secret, OAuthGrant grant, std::int64_t expires) {
    const std::lock_guard lock(mutex_);
    kept_.insert_or_assign(secret, Kept{std::move(grant), expires});
}

std::optional<OAuthGrant> OAuthGrants::take(OAuthGrant::Kind kind, const std::string& secret,
                                            std::int64_t now) {
    const std::lock_guard lock(mutex_);
    const auto found = kept_.find(secret);
    if (found == kept_.end() || found->second.grant.kind != kind) {
        return std::nullopt;
    }
    const auto node = kept_.extract(found);
    if (node.mapped().expires <= now) {
        return std::nullopt;
    }
    return node.mapped().grant;
}

}  // namespace emulator
