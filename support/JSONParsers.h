// Parsers that are used again.

#ifndef KORVOGITSERVICE_SUPPORT_JSONPARSERS_H
#define KORVOGITSERVICE_SUPPORT_JSONPARSERS_H

#include <simdjson.h>

#include <cstddef>
#include <memory>

namespace rkt {

/// How deep arrays and objects may nest in a document.
constexpr std::size_t jsonDepthLimit = 512;

/// The parser counts an array or object as a level only if it holds something, and refuses the
/// level that its limit names. With this limit, then, no document deeper than jsonDepthLimit
/// passes, nor does one of exactly that depth whose innermost level is not empty: those are counted
/// elsewhere.
constexpr std::size_t jsonParserDepth = jsonDepthLimit;

struct JSONParserReturn {
    void operator()(simdjson::dom::parser* parser) const noexcept;
};

/// A parser with the document that it read, an idle one where there is any. Its buffers are some
/// fifteen times the text's size, and the pages of a new one cost more than the parsing, so they
/// are worth keeping. It may be returned on another thread than it was taken on.
using LeasedJSONParser = std::unique_ptr<simdjson::dom::parser, JSONParserReturn>;

/// Null, besides for want of memory, only while the process exits: some more are there then, but
/// none can be made.
LeasedJSONParser leaseJSONParser();

}  // namespace rkt

#endif
