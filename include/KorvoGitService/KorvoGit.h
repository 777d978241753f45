// Clone addresses.

#ifndef KORVOGITSERVICE_KORVOGIT_H
#define KORVOGITSERVICE_KORVOGIT_H

#include <optional>
#include <string_view>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTURL.h"

/// `rkt_URLWithString:`: a URL from an address that `git clone` takes (git-clone(1), "GIT URLS").
/// The scp form `git@host:owner/repo.git` becomes `ssh://git@host/owner/repo.git`; a URL with
/// scheme and host, or a file URL, stays as it is; any other text gives nothing.
RKT_EXPORT std::optional<RKTURL> rkt_URLWithString(std::string_view text);

#endif
