// Clone addresses, which both Bitbucket products list by name.

#ifndef KORVOGITSERVICE_ADAPTERS_BITBUCKETCLONELINKS_H
#define KORVOGITSERVICE_ADAPTERS_BITBUCKETCLONELINKS_H

#include <optional>
#include <span>
#include <string_view>

#include "KorvoGitService/RKTJSON.h"
#include "KorvoGitService/RKTServiceRepository.h"
#include "KorvoGitService/RKTURL.h"

namespace rkt {

/// Where the address goes that an entry of this name holds.
struct CloneLinkName {
    std::string_view name;
    void (RKTServiceRepository::*setURL)(std::optional<RKTURLView>);
};

/// Reads an array of `{"name": …, "href": …}`. Entries of other names or without an address are
/// passed over; of two for one property the later counts, even if its address is of no use.
void applyCloneLinks(RKTServiceRepository& repository, const RKTJSONValue* links,
                     std::span<const CloneLinkName> names);

/// The same as a line of a mapping table.
template <const auto& names>
void cloneLinks(RKTServiceRepository& repository, const RKTJSONValue* links) {
    applyCloneLinks(repository, links, names);
}

}  // namespace rkt

#endif
