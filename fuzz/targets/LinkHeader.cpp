// The "Link" header. The input is its value.

#include "core/LinkHeader.h"

#include <map>

#include "KorvoGitService/RKTHTTPURLResponse.h"
#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"

namespace {

using Relations = RKTServiceResult::LinkRelations;
namespace plain = fuzz::plain;

bool take(std::string_view& text, std::string_view literal) {
    const auto rest = plain::withoutLeadingSpace(text);
    if (plain::lowered(rest.substr(0, literal.size())) != literal) return false;
    text = rest.substr(literal.size());
    return true;
}

/// Empty where there is nothing before `stop`.
std::string takeUpTo(std::string_view& text, char stop) {
    const auto rest = plain::withoutLeadingSpace(text);
    const auto taken = rest.substr(0, rest.find(stop));
    if (!taken.empty()) text = rest.substr(taken.size());
    return std::string(taken);
}

std::map<std::string, std::string, std::less<>> plainRelations(std::string_view text) {
    std::map<std::string, std::string, std::less<>> relations;
    for (std::size_t count = 0; count < rkt::maximumLinkCount; ++count) {
        if (!take(text, "<")) break;
        const auto target = takeUpTo(text, '>');
        if (target.empty() || !take(text, ">") || !take(text, ";") || !take(text, "rel=")) break;
        const char quote = take(text, "\"") ? '"' : take(text, "'") ? '\'' : ',';
        const auto name = takeUpTo(text, quote);
        if (name.empty()) break;
        if (quote != ',') take(text, {&quote, 1});
        relations.erase(name);
        if (plain::isURLText(target)) relations.emplace(name, target);
        if (!take(text, ",")) break;
    }
    return relations;
}

/// As a service writes them; without the names that cannot be quoted.
std::string written(Relations& relations) {
    std::string header;
    std::erase_if(relations, [](const auto& entry) {
        return entry.first.find('"') != std::string::npos || entry.second.absoluteString().empty();
    });
    for (const auto& [name, url] : relations) {
        header.append(header.empty() ? "" : ", ").append("<" + url.absoluteString() + ">; ");
        header.append("rel=\"" + name + "\"");
    }
    return header;
}

}  // namespace

FUZZ_TARGET(LinkHeader) {
    auto relations = rkt::linkRelationsInHeader(input);
    const auto expected = plainRelations(input);
    fuzz::require(relations.size() == expected.size(), "as many relations as the rules give");
    for (const auto& [name, url] : relations) {
        const auto found = expected.find(name);
        fuzz::require(found != expected.end(), "a name by the rules");
        const auto sameURL = RKTURL::URLWithString(found->second);
        fuzz::require(sameURL && url == *sameURL, "a target by the rules");
    }

    const RKTHTTPURLResponse response({}, 200, {{"link", std::string(input)}});
    fuzz::require(
        RKTServiceResult::resultWithHTTPURLResponse(&response)->linkRelations() == relations,
        "a result has the header's relations");

    const auto header = written(relations);
    fuzz::require(rkt::linkRelationsInHeader(header) == relations,
                  "relations that are written are read back");
}
