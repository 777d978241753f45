#pragma once

#include <KorvoGitService/RKTServiceRequest.h>

#include <cstddef>
#include <span>
#include <string>

#include "RepositoryFields.h"
#include "Terminal.h"

namespace korvogit {

/// Repositories for a person: one line each, and an empty line below.
/// @param columns the properties to show, under their names; empty: what most people look for
std::string repositoriesTable(const RKTServiceArrayResult::Results& repositories,
                              std::span<const RepositoryField> columns, const Terminal& terminal);

/// Which page this is, of how many.
std::string pageLine(const RKTServiceArrayResult& page);
/// The same, and how to get at the next one.
std::string pageLineWithOption(const RKTServiceArrayResult& page);

/// "1 repository", "137 repositories".
std::string countLine(std::size_t repositories);

/// A page with its line below.
std::string pageTable(const RKTServiceArrayResult& page, const Terminal& terminal);

}  // namespace korvogit
