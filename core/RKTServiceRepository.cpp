#include "KorvoGitService/RKTServiceRepository.h"

#include <utility>
#include <variant>

#include "support/URLText.h"

const char* const RKTServiceRepositoryStateOpen = "open";
const char* const RKTServiceRepositoryStateClosed = "closed";

const char* const RKTServiceRepositoryVisibilityPublic = "public";
const char* const RKTServiceRepositoryVisibilityPrivate = "private";
const char* const RKTServiceRepositoryVisibilityInternal = "internal";

std::optional<std::string> RKTServiceRepository::textAt(Text place) const {
    const auto held = lock();
    return std::optional<std::string>(texts_.get(place));
}

void RKTServiceRepository::setTextAt(Text place, std::optional<std::string_view> value) {
    const auto held = lock();
    texts_.set(place, value);
}

std::optional<RKTURL> RKTServiceRepository::URLAt(Text place) const {
    auto text = textAt(place);
    if (!text) return std::nullopt;
    return RKTURLAccess::URLWithTextOfURL(std::move(*text));
}

void RKTServiceRepository::setURLAt(Text place, std::optional<RKTURLView> value) {
    setTextAt(place, value ? std::optional(value->absoluteString()) : std::nullopt);
}

std::optional<RKTServiceIdentifier> RKTServiceRepository::identifierAt(Text place) const {
    const auto held = lock();
    if (const auto text = texts_.get(place)) return RKTServiceIdentifier(*text);
    return identifierNumbers_[place];
}

void RKTServiceRepository::setIdentifierAt(Text place,
                                           const std::optional<RKTServiceIdentifier>& value) {
    const auto* const text = value ? std::get_if<std::string>(&value->value_) : nullptr;
    const auto* const number = value ? std::get_if<RKTNumber>(&value->value_) : nullptr;
    const auto held = lock();
    texts_.set(place, text ? std::optional<std::string_view>(*text) : std::nullopt);  // may throw
    identifierNumbers_[place] = number ? std::optional(*number) : std::nullopt;
}
