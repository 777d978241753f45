#include "support/JSONParsers.h"

#include <new>
#include <utility>

#include "support/Idle.h"

namespace rkt {
namespace {

using Parser = std::unique_ptr<simdjson::dom::parser>;

/// About as many as threads work on answers at once. More documents than that are rare.
constexpr std::size_t keptParsers = 4;

/// Of text; the buffers of a parser for as much take about 15 MiB. A page of a hundred records
/// stays below.
constexpr std::size_t keptCapacity = std::size_t{1} << 20;

Idle<Parser>& idle() {
    static auto& instance = *new Idle<Parser>(keptParsers);  // a static may hold a document
    return instance;
}

bool worthKeeping(const simdjson::dom::parser& parser) {
    return parser.capacity() <= keptCapacity && parser.max_depth() == jsonParserDepth;
}

}  // namespace

void JSONParserReturn::operator()(simdjson::dom::parser* parser) const noexcept {
    Parser owned(parser);
    if (worthKeeping(*owned)) idle().give(std::move(owned));
}

LeasedJSONParser leaseJSONParser() {
    const auto any = [](const Parser&) { return true; };
    if (auto parser = idle().take(any)) return LeasedJSONParser(parser->release());
    LeasedJSONParser parser(new simdjson::dom::parser);
    if (parser->allocate(simdjson::dom::MINIMAL_DOCUMENT_CAPACITY, jsonParserDepth)) {
        throw std::bad_alloc();
    }
    return parser;
}

}  // namespace rkt
