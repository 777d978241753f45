#include "KorvoGitService/RKTJSON.h"

#include <bit>
#include <string>
#include <type_traits>
#include <utility>

#include "support/JSONParsers.h"
#include "support/JSONReading.h"
#include "support/JSONRewriting.h"
#include "support/LibraryBundle.h"

namespace dom = simdjson::dom;

/// The public values hold the parser's own views as two words, so that its header stays out of the
/// public ones.
struct RKTJSONAccess {
    using Place = std::array<std::uintptr_t, 2>;

    template <class View>
    static View view(const Place& place) {
        static_assert(sizeof(View) == sizeof(Place) && std::is_trivially_copyable_v<View>);
        return std::bit_cast<View>(place);
    }

    /// The view that a public value holds; View is of the same kind as Value.
    template <class View, class Value>
    static View viewOf(const Value& value) {
        return view<View>(value.place_);
    }

    template <class Value, class View>
    static Value make(const View& view) {
        Value value;
        value.place_ = std::bit_cast<Place>(view);
        return value;
    }

    /// Word by word: to compare the array as a whole waits until both have left for the cache.
    static bool isNothing(const RKTJSONValue& value) {
        return (value.place_[0] | value.place_[1]) == 0;
    }

    enum class Behind { Nothing, Room };
    static std::optional<RKTJSONDocument> document(std::string_view text, Behind behind,
                                                   std::optional<RKTError>* error);
};

namespace {

template <class Value, class View>
std::optional<Value> valueOfType(const RKTJSONValue& value) {
    if (RKTJSONAccess::isNothing(value)) {
        return std::nullopt;
    }
    View view;
    if (RKTJSONAccess::viewOf<dom::element>(value).get(view)) {
        return std::nullopt;
    }
    return RKTJSONAccess::make<Value>(view);
}

template <class Iterator, class View>
void advance(Iterator& iterator) {
    auto view = RKTJSONAccess::viewOf<View>(iterator);
    ++view;
    iterator = RKTJSONAccess::make<Iterator>(view);
}

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

using Behind = RKTJSONAccess::Behind;

struct Parsed {
    rkt::LeasedJSONParser parser;
    dom::element root;
};

struct Failure {
    simdjson::error_code code = simdjson::SUCCESS;
    std::optional<std::size_t> position;
};

simdjson::error_code parse(std::string_view text, Behind behind, Parsed& parsed) {
    const bool copies = behind == Behind::Nothing;
    const auto code = parsed.parser->parse(text.data(), text.size(), copies).get(parsed.root);
    if (code) {
        return code;
    }
    const bool isContainer = parsed.root.is_array() || parsed.root.is_object();
    return isContainer ? simdjson::SUCCESS : simdjson::INCORRECT_TYPE;
}

/// The fast parser refuses integers beyond 64 bits and documents of the last permitted depth; both
/// are valid.
bool mayBeValid(simdjson::error_code refusal) {
    return refusal == simdjson::NUMBER_ERROR || refusal == simdjson::DEPTH_ERROR;
}

/// @param text  without a byte-order mark
Failure parseWithRewriting(std::string_view text, Behind behind, Parsed& parsed) {
    if (!parsed.parser) {
        return {simdjson::MEMALLOC, std::nullopt};
    }
    if (text.empty()) {
        return {simdjson::EMPTY, 0};
    }
    const auto code = parse(text, behind, parsed);
    if (!code) {
        return {};
    }
    const auto rewriting = rkt::rewriteJSON(text);
    if (!rewriting.text || !mayBeValid(code)) {
        return {code, rewriting.errorPosition};
    }
    // The rewriting has counted the levels, the innermost included.
    const auto allocated =
        parsed.parser->allocate(rewriting.text->size(), rkt::jsonParserDepth + 1);
    return {allocated ? allocated : parse(*rewriting.text, Behind::Nothing, parsed), std::nullopt};
}

RKTError errorFor(const Failure& failure) {
    RKTError::UserInfo information{
        {RKTError::NSLocalizedDescriptionKey,
         rkt::localized("The text could not be read because it is not valid JSON.")},
        {RKTError::RKTUnderlyingCodeKey, RKTNumber(static_cast<int>(failure.code))},
        {RKTError::RKTUnderlyingTextKey, std::string(simdjson::error_message(failure.code))}};
    if (failure.position) {
        information.emplace(RKTError::NSJSONSerializationErrorIndex, RKTNumber(*failure.position));
    }
    return {RKTError::NSCocoaErrorDomain, RKTError::NSPropertyListReadCorruptError,
            std::move(information)};
}

}  // namespace

std::optional<RKTNumber> RKTJSONValue::number() const {
    if (RKTJSONAccess::isNothing(*this)) {
        return std::nullopt;
    }
    const auto element = RKTJSONAccess::viewOf<dom::element>(*this);
    switch (element.type()) {
        case dom::element_type::BOOL:
            return RKTNumber(element.get_bool().value_unsafe());
        case dom::element_type::INT64:
            return RKTNumber(element.get_int64().value_unsafe());
        case dom::element_type::UINT64:
            return RKTNumber(element.get_uint64().value_unsafe());
        case dom::element_type::DOUBLE:
            return RKTNumber(element.get_double().value_unsafe());
        default:
            return std::nullopt;
    }
}

std::optional<std::string_view> RKTJSONValue::string() const {
    std::string_view text;
    if (RKTJSONAccess::isNothing(*this) || RKTJSONAccess::viewOf<dom::element>(*this).get(text)) {
        return std::nullopt;
    }
    return text;
}

std::optional<RKTJSONArray> RKTJSONValue::array() const {
    return valueOfType<RKTJSONArray, dom::array>(*this);
}

std::optional<RKTJSONDictionary> RKTJSONValue::dictionary() const {
    return valueOfType<RKTJSONDictionary, dom::object>(*this);
}

std::size_t RKTJSONArray::count() const {
    return static_cast<std::size_t>(std::distance(begin(), end()));
}

RKTJSONArray::Iterator RKTJSONArray::begin() const {
    return RKTJSONAccess::make<Iterator>(RKTJSONAccess::viewOf<dom::array>(*this).begin());
}

RKTJSONArray::Iterator RKTJSONArray::end() const {
    return RKTJSONAccess::make<Iterator>(RKTJSONAccess::viewOf<dom::array>(*this).end());
}

RKTJSONValue RKTJSONArray::Iterator::operator*() const {
    return RKTJSONAccess::make<RKTJSONValue>(*RKTJSONAccess::viewOf<dom::array::iterator>(*this));
}

RKTJSONArray::Iterator& RKTJSONArray::Iterator::operator++() {
    advance<Iterator, dom::array::iterator>(*this);
    return *this;
}

std::optional<RKTJSONValue> RKTJSONDictionary::objectForKey(std::string_view key) const {
    dom::element element;
    if (RKTJSONAccess::viewOf<dom::object>(*this).at_key(key).get(element)) {
        return std::nullopt;
    }
    return RKTJSONAccess::make<RKTJSONValue>(element);
}

RKTJSONDictionary::Iterator RKTJSONDictionary::begin() const {
    return RKTJSONAccess::make<Iterator>(RKTJSONAccess::viewOf<dom::object>(*this).begin());
}

RKTJSONDictionary::Iterator RKTJSONDictionary::end() const {
    return RKTJSONAccess::make<Iterator>(RKTJSONAccess::viewOf<dom::object>(*this).end());
}

RKTJSONDictionary::Member RKTJSONDictionary::Iterator::operator*() const {
    const auto view = RKTJSONAccess::viewOf<dom::object::iterator>(*this);
    return {view.key(), RKTJSONAccess::make<RKTJSONValue>(view.value())};
}

RKTJSONDictionary::Iterator& RKTJSONDictionary::Iterator::operator++() {
    advance<Iterator, dom::object::iterator>(*this);
    return *this;
}

struct RKTJSONDocument::Content {
    Parsed parsed;
};

RKTJSONDocument::RKTJSONDocument(std::unique_ptr<Content> content) : content_(std::move(content)) {}
RKTJSONDocument::RKTJSONDocument(RKTJSONDocument&&) noexcept = default;
RKTJSONDocument& RKTJSONDocument::operator=(RKTJSONDocument&&) noexcept = default;
RKTJSONDocument::~RKTJSONDocument() = default;

RKTJSONValue RKTJSONDocument::root() const {
    return RKTJSONAccess::make<RKTJSONValue>(content_->parsed.root);
}

std::optional<RKTJSONDocument> RKTJSONAccess::document(std::string_view text, Behind behind,
                                                       std::optional<RKTError>* error) {
    const std::size_t skipped = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    auto content = std::make_unique<RKTJSONDocument::Content>();
    content->parsed.parser = rkt::leaseJSONParser();
    auto failure = parseWithRewriting(text.substr(skipped), behind, content->parsed);
    if (!failure.code) {
        return RKTJSONDocument(std::move(content));
    }
    if (error) {
        if (failure.position) {
            *failure.position += skipped;
        }
        *error = errorFor(failure);
    }
    return std::nullopt;
}

std::optional<RKTJSONDocument> RKTJSONSerialization::JSONObjectWithData(
    std::string_view data, std::optional<RKTError>* error) {
    return RKTJSONAccess::document(data, Behind::Nothing, error);
}

const RKTJSONDocument& RKTJSONSerialization::emptyDictionary() {
    static const auto& document = *new RKTJSONDocument(JSONObjectWithData("{}").value());
    return document;
}

namespace rkt {

std::optional<RKTJSONDocument> JSONDocumentInPlace(std::string& text,
                                                   std::optional<RKTError>* error) {
    static_assert(roomBehindJSON >= simdjson::SIMDJSON_PADDING);
    const auto size = text.size();
    text.append(roomBehindJSON, '\0');
    auto document =
        RKTJSONAccess::document(std::string_view(text).substr(0, size), Behind::Room, error);
    text.resize(size);
    return document;
}

void visitMembers(const RKTJSONDictionary& dictionary, const KeyTable& keys, MemberVisitor visit,
                  void* context) {
    const auto members = RKTJSONAccess::viewOf<dom::object>(dictionary);
    const auto end = members.end();
    for (auto member = members.begin(); member != end; ++member) {
        const auto key = keys.find(member.key());
        if (key == KeyTable::none) continue;
        if (!visit(context, key, RKTJSONAccess::make<RKTJSONValue>(member.value()))) return;
    }
}

}  // namespace rkt
