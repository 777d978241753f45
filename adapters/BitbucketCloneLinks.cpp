#include "adapters/BitbucketCloneLinks.h"

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/KorvoGit.h"

namespace rkt {

void applyCloneLinks(RKTServiceRepository& repository, const RKTJSONValue* links,
                     std::span<const CloneLinkName> names) {
    const auto entries = links ? links->array() : std::nullopt;
    if (!entries) return;
    for (const auto& entry : *entries) {
        const auto name = kc_objectOfClass<std::string_view>(entry, "name");
        const auto href = kc_objectOfClass<std::string_view>(entry, "href");
        if (!name || !href || href->empty()) continue;
        for (const auto& known : names) {
            if (known.name == *name) (repository.*known.setURL)(rkt_URLWithString(*href));
        }
    }
}

}  // namespace rkt
