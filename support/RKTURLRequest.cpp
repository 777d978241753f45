#include "KorvoGitService/RKTURLRequest.h"

#include <algorithm>

#include "support/ASCII.h"

namespace {

auto isNamed(std::string_view field) {
    return [field](const RKTURLRequest::Header& header) {
        return rkt::equalIgnoringCase(header.first, field);
    };
}

}  // namespace

std::optional<std::string> RKTURLRequest::valueForHTTPHeaderField(std::string_view field) const {
    const auto header = std::ranges::find_if(headers_, isNamed(field));
    return header == headers_.end() ? std::nullopt : std::optional(header->second);
}

void RKTURLRequest::setValue(std::optional<std::string> value,
                             std::string_view forHTTPHeaderField) {
    // The name may be one of those that the request itself holds.
    std::string field(forHTTPHeaderField);
    std::erase_if(headers_, isNamed(field));
    if (value) {
        headers_.emplace_back(std::move(field), *std::move(value));
    }
}
