// Bodies of failures. The input's first line is the status, the rest the body.

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "core/HTTPError.h"
#include "fuzz/common/Plain.h"
#include "fuzz/common/PlainJSON.h"
#include "fuzz/common/Target.h"
#include "support/Text.h"

using fuzz::require;

FUZZ_TARGET(ErrorBody) {
    const auto status = static_cast<int>(fuzz::plain::integerIn(fuzz::takeLine(input)) % 100'000);
    require(rkt::isFailureStatus(status) == !(status >= 200 && status <= 299), "what a failure is");
    const auto read = fuzz::readJSONBothWays(input);
    const auto error = rkt::errorWithHTTPStatus(
        status, read.document ? std::optional(read.document->root()) : std::nullopt);
    require(error.domain() == RKTKorvoGitServiceErrorDomain, "the domain");
    require(error.code() == (status == 401 ? 1001 : status), "the code");
    require(!error.localizedDescription().empty(), "a description");
    const auto message = read.expected ? read.expected->get<std::string>("message") : std::nullopt;
    require(error.localizedRecoverySuggestion() == message, "the service's message");
    require(error.userInfo().size() == (message ? 2 : 1), "and nothing else");

    if (!fuzz::plain::isUTF8(input)) return;
    const auto capitals = rkt::capitalized(input);
    require(fuzz::plain::isUTF8(capitals), "capitals are text");
    require(rkt::integerFromText(input) == fuzz::plain::integerIn(input), "the number in a text");
}
