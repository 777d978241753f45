#include "support/JSONParsers.h"

#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <utility>
#include <vector>

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

/// Null without memory.
Parser newParser() {
    Parser parser(new (std::nothrow) simdjson::dom::parser);
    if (!parser || parser->allocate(simdjson::dom::MINIMAL_DOCUMENT_CAPACITY, jsonParserDepth))
        return nullptr;
    return parser;
}

/// simdjson makes parsers by a static object of its own. It is destroyed when the process exits,
/// while other threads go on, and before the statics of the application that may still ask
/// something. Parsers do without it once they are made, so the last ones are made just before.
class Maker {
public:
    static Maker& instance() {
        static auto& maker = *new Maker;
        return maker;
    }

    Parser make() {
        {
            const std::shared_lock lock(mutex_);
            if (!exits_) return newParser();
        }
        const std::unique_lock lock(mutex_);
        if (last_.empty()) return nullptr;
        auto parser = std::move(last_.back());
        last_.pop_back();
        return parser;
    }

private:
    static constexpr int lastParsers = 16;

    Maker() {
        last_.reserve(lastParsers);
        newParser();  // simdjson's static is there from now on, and goes after what comes next
        std::atexit([] { instance().makeLast(); });
    }

    // In a forked child nobody may be left to release the lock.
    void makeLast() {
        if (getpid() != process_) return;
        const std::unique_lock lock(mutex_);
        exits_ = true;
        for (int i = 0; i < lastParsers; ++i) {
            if (auto parser = newParser()) last_.push_back(std::move(parser));
        }
    }

    const pid_t process_ = getpid();
    std::shared_mutex mutex_;
    bool exits_ = false;
    std::vector<Parser> last_;
};

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
    return LeasedJSONParser(Maker::instance().make().release());
}

}  // namespace rkt
