// CSV by RFC 4180: CRLF, quotes where a field needs them. An unset property is an empty field, an
// empty text is `""`.

#pragma once

#include <KorvoGitService/RKTServiceRequest.h>

#include <span>
#include <string>

#include "RepositoryFields.h"

namespace korvogit {

/// The header line: the names of the properties.
std::string csvHeader(std::span<const RepositoryField> fields);

/// A line for each repository.
/// @param forTerminal makes control characters visible instead of passing them on
std::string csvLines(const RKTServiceArrayResult::Results& repositories,
                     std::span<const RepositoryField> fields, bool forTerminal);

}  // namespace korvogit
