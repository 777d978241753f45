#pragma once

#include <KorvoGitService/RKTServiceRequest.h>

#include "RepositoryFields.h"

namespace korvogit {

/// Sorts by a property: numbers by their value, texts by their letters whatever their case (that of
/// ASCII). Those without it come last in either direction, equals stay in their order.
void sortRepositories(RKTServiceArrayResult::Results& repositories, const RepositoryField& field,
                      bool descending);

}  // namespace korvogit
