#include "core/LinkHeader.h"

#include <optional>
#include <string>

#include "KorvoGitService/RKTScanner.h"

namespace rkt {
namespace {

struct Link {
    std::string_view target;
    std::string_view name;
};

std::optional<std::string_view> scanName(RKTScanner& scanner) {
    for (const std::string_view quote : {"\"", "'"}) {
        if (!scanner.scanString(quote)) continue;
        const auto name = scanner.scanUpToString(quote);
        scanner.scanString(quote);  // an unterminated name goes to the end
        return name;
    }
    return scanner.scanUpToString(",");
}

std::optional<Link> scanLink(RKTScanner& scanner) {
    if (!scanner.scanString("<")) return std::nullopt;
    const auto target = scanner.scanUpToString(">");
    if (!target) return std::nullopt;
    for (const std::string_view literal : {">", ";", "rel="}) {
        if (!scanner.scanString(literal)) return std::nullopt;
    }
    const auto name = scanName(scanner);
    if (!name) return std::nullopt;
    return Link{*target, *name};
}

}  // namespace

RKTServiceResult::LinkRelations linkRelationsInHeader(std::string_view header) {
    RKTServiceResult::LinkRelations relations;
    RKTScanner scanner(header);
    for (std::size_t count = 0; count < maximumLinkCount && !scanner.isAtEnd(); ++count) {
        const auto link = scanLink(scanner);
        if (!link) break;
        const std::string name(link->name);
        if (const auto url = RKTURL::URLWithString(link->target)) {
            relations.insert_or_assign(name, *url);
        } else {
            relations.erase(name);
        }
        if (!scanner.scanString(",")) break;
    }
    return relations;
}

}  // namespace rkt
