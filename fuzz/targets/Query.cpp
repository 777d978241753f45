// Queries, read and written. The input is the text of a query, of items, and of a form's value.

#include <algorithm>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/RKTURLComponents.h"
#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"
#include "support/Percent.h"

namespace {

namespace plain = fuzz::plain;
using fuzz::require;
using Items = std::vector<RKTURLQueryItem>;

Items itemsOf(const plain::Items& items) {
    Items result;
    for (const auto& [name, value] : items) result.push_back({name, value});
    return result;
}

RKTURLComponents somewhere() {
    RKTURLComponents components;
    components.setScheme("https");
    components.setHost("h.example");
    return components;
}

void checkReading(std::string_view query) {
    const auto url = RKTURL::URLWithString("https://h.example/p?" + std::string(query));
    if (!url) return;
    const auto components = RKTURLComponents::componentsWithURL(*url);
    require(components.has_value(), "components");
    const auto expected =
        plain::queryItems(plain::queryOf(url->absoluteString()).value_or(std::string_view()));
    require(components->queryItems() == itemsOf(expected), "items by the rules");
    require(kc_queryParameters(*url) == plain::folded(expected), "a dictionary by the rules");
}

/// An item for each line, whose first "=" separates name and value.
Items itemsInLines(std::string_view text) {
    Items items;
    for (const auto line : plain::split(text, '\n')) {
        const auto equals = line.find('=');
        RKTURLQueryItem item{std::string(line.substr(0, equals)), {}};
        if (equals != std::string_view::npos) item.value = line.substr(equals + 1);
        items.push_back(std::move(item));
    }
    return items;
}

void checkWriting(const Items& items) {
    constexpr std::string_view written =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$'()*+,/:;?@%=&";
    auto components = somewhere();
    components.setQueryItems(items);
    const auto& query = components.percentEncodedQuery();
    require(query.has_value(), "items make a query");
    require(query->find_first_not_of(written) == std::string::npos, "characters of a query");
    require(static_cast<std::size_t>(std::ranges::count(*query, '&')) == items.size() - 1,
            "one separator less than items");
    const auto url = components.URL();
    require(url.has_value(), "any items can be set");
    const bool areText = std::ranges::all_of(items, [](const auto& item) {
        return plain::isUTF8(item.name) && plain::isUTF8(item.value.value_or(""));
    });
    const bool leaveNothing = items == Items{{"", {}}};
    if (!areText || leaveNothing) return;
    require(RKTURLComponents::componentsWithURL(*url)->queryItems() == items,
            "items that are written are read back");
}

void checkForm(std::string_view value) {
    const auto encoded = rkt::formValueEncoded(value);
    require(plain::percentDecoded(encoded) == value, "a form's value is read back");
    require(plain::isURLText("?" + encoded), "a form's value has a query's characters");
    require(rkt::percentDecode(encoded) == plain::decodedText(encoded), "decoding by the rules");
    require(rkt::percentDecode(value) == plain::decodedText(value), "decoding by the rules");
    require(rkt::isUTF8(value) == plain::isUTF8(value), "what UTF-8 is");
}

void checkJoining(std::string_view text) {
    const auto parts = plain::split(text, '\n');
    const auto joined = RKTStringByAppendingPathComponent(parts.front(), parts.back());
    require(joined.find("//") == std::string::npos, "no two slashes");
    require(joined.size() <= 1 || !joined.ends_with('/'), "no slash at the end");
    require(RKTStringByAppendingPathComponent(joined, "") == joined, "joined once and for all");
}

}  // namespace

FUZZ_TARGET(Query) {
    checkReading(input);
    checkWriting(itemsInLines(input));
    checkForm(input);
    checkJoining(input);
}
