// The "Link" header, from which services' paging is read.

#ifndef KORVOGITSERVICE_CORE_LINKHEADER_H
#define KORVOGITSERVICE_CORE_LINKHEADER_H

#include <cstddef>
#include <string_view>

#include "KorvoGitService/RKTServiceRequest.h"

namespace rkt {

/// How many links of a header are read. Services send four; a server that sends a million does not
/// get a million entries of memory for them.
constexpr std::size_t maximumLinkCount = 1000;

/// The links of a header (RFC 8288 section 3), as far as they have the form that the hosting
/// services write: the target, then "rel" as the first parameter, in double quotes, in apostrophes
/// or bare. The name is kept as it stands, blanks and letter case included. The first deviation
/// ends the reading, and what was read before it stays. Of two links with one name the later one
/// counts; a target that is no URL takes its name out.
RKTServiceResult::LinkRelations linkRelationsInHeader(std::string_view header);

}  // namespace rkt

#endif
