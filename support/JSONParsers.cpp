#include "support/JSONParsers.h"

#include <array>
#include <new>
#include <utility>

namespace rkt {
namespace {

/// Two documents are open at once where one answer is read while another is mapped; more are rare.
constexpr std::size_t keptParsers = 2;

/// Of text; the buffers of a parser for as much take about 15 MiB. A page of a hundred records
/// stays below.
constexpr std::size_t keptCapacity = std::size_t{1} << 20;

/// A document may outlive the thread's other objects, as one in a static does, and must then not be
/// put among them.
thread_local bool idleParsersEnded = false;

struct IdleParsers {
    IdleParsers() = default;
    IdleParsers(const IdleParsers&) = delete;
    IdleParsers& operator=(const IdleParsers&) = delete;
    ~IdleParsers() { idleParsersEnded = true; }

    std::array<std::unique_ptr<simdjson::dom::parser>, keptParsers> parsers;
};

thread_local IdleParsers idle;

bool worthKeeping(const simdjson::dom::parser& parser) {
    return parser.capacity() <= keptCapacity && parser.max_depth() == jsonParserDepth;
}

}  // namespace

void JSONParserReturn::operator()(simdjson::dom::parser* parser) const noexcept {
    std::unique_ptr<simdjson::dom::parser> owned(parser);
    if (idleParsersEnded || !worthKeeping(*owned)) {
        return;
    }
    for (auto& place : idle.parsers) {
        if (!place) {
            place = std::move(owned);
            return;
        }
    }
}

LeasedJSONParser leaseJSONParser() {
    if (!idleParsersEnded) {
        for (auto& place : idle.parsers) {
            if (place) {
                return LeasedJSONParser(place.release());
            }
        }
    }
    LeasedJSONParser parser(new simdjson::dom::parser);
    if (parser->allocate(simdjson::dom::MINIMAL_DOCUMENT_CAPACITY, jsonParserDepth)) {
        throw std::bad_alloc();
    }
    return parser;
}

}  // namespace rkt
