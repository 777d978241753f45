#include "ErrorReport.h"

#include <KorvoGitService/KorvoGitServiceErrors.h>

#include <variant>

#include "Advice.h"
#include "StandardStreams.h"

namespace korvogit {

namespace {

std::string sentence(const RKTError& error, const std::string& serviceName) {
    std::string description = error.localizedDescription();
    if (error.domain() == RKTKorvoGitServiceErrorDomain) {
        // The description is a bare status text, such as "Not Found".
        if (error.code() == RKTServiceErrorUnauthorized) {
            return serviceName + " does not accept the credentials (" + description + ").";
        }
        // The higher ones are of signing in, and have descriptions of their own.
        if (error.code() < RKTServiceErrorUnauthorized) {
            return serviceName + " answered with status " + std::to_string(error.code()) + " (" +
                   description + ").";
        }
    }
    if (!description.empty() && !description.ends_with('.')) description += '.';
    return description;
}

/// What the service suggests, where it explains it, or else where it happened.
std::string lineBelow(const RKTError& error) {
    if (const auto suggestion = error.localizedRecoverySuggestion()) return *suggestion;
    if (const auto page = error.URL()) return page->absoluteString();
    const auto address = error.userInfo().find(RKTError::NSURLErrorFailingURLStringErrorKey);
    if (address == error.userInfo().end()) return {};
    const auto* text = std::get_if<std::string>(&address->second);
    return text != nullptr ? *text : std::string();
}

}  // namespace

void report(const RKTError& error, const std::string& serviceName) {
    complain(sentence(error, serviceName), {lineBelow(error), adviceFor(error)});
}

RKTError errorForUselessAnswer(const std::string& sentence) {
    return {RKTError::NSURLErrorDomain,
            RKTError::NSURLErrorBadServerResponse,
            {{RKTError::NSLocalizedDescriptionKey, sentence}}};
}

std::optional<RKTError> errorOfListing(const RKTServiceArrayResult& page,
                                       const std::string& serviceName) {
    if (page.error() || page.results()) return page.error();
    return RKTError(RKTError::NSCocoaErrorDomain, RKTError::NSPropertyListReadCorruptError,
                    {{RKTError::NSLocalizedDescriptionKey,
                      serviceName + " answered, but not with a list of repositories."}});
}

}  // namespace korvogit
