#pragma once

#include <KorvoGitService/RKTError.h>
#include <KorvoGitService/RKTServiceRequest.h>

#include <optional>
#include <string>

namespace korvogit {

/// Tells a person on standard error what went wrong, in one sentence; under it what the service
/// suggests or, for a failed transfer, the address; and what it is not and what to do next.
void report(const RKTError& error, const std::string& serviceName);

/// For an answer that the library takes, but that lacks what a person asked for.
RKTError errorForUselessAnswer(const std::string& sentence);

/// The error of a page of repositories. Who lists wants a list, where the library takes any JSON:
/// without one the error is that of no JSON at all.
std::optional<RKTError> errorOfListing(const RKTServiceArrayResult& page,
                                       const std::string& serviceName);

}  // namespace korvogit
