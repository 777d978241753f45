#include "RequestOptions.h"

#include <KorvoGitService/RKTServiceRepository.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace korvogit {

namespace {

template <class Integer>
std::optional<Integer> parse(std::string_view text) {
    Integer number = 0;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const auto [rest, error] = std::from_chars(begin, end, number);
    if (error != std::errc() || rest != end) return std::nullopt;
    return number;
}

RKTNumber parseNumber(const std::string& option, const std::string& text) {
    if (const auto number = parse<std::int64_t>(text)) return *number;
    if (const auto number = parse<std::uint64_t>(text)) return *number;
    throw CLI::ValidationError(option, "must be an integer of at most 64 bits");
}

template <class Key>
using Names = std::span<const std::pair<std::string_view, Key>>;

/// A name, or the number behind one; also a number that has no name.
template <class Key>
Key parseKey(const std::string& option, const std::string& text, Names<Key> names) {
    std::string known;
    for (const auto& [name, key] : names) {
        if (name == text) return key;
        known += std::string(name) + ", ";
    }
    if (const auto number = parse<std::uint64_t>(text)) return static_cast<Key>(*number);
    throw CLI::ValidationError(option, "must be one of " + known + "or a number");
}

// The library ignores values that it does not know, so a slip of the pen would list everything.
std::string checkState(const std::string& text) {
    for (const char* state : {RKTServiceRepositoryStateOpen, RKTServiceRepositoryStateClosed}) {
        if (text == state) return {};
    }
    return "must be open or closed";
}

std::string checkVisibility(const std::string& text) {
    for (const char* visibility :
         {RKTServiceRepositoryVisibilityPublic, RKTServiceRepositoryVisibilityPrivate,
          RKTServiceRepositoryVisibilityInternal}) {
        if (text == visibility) return {};
    }
    return "must be public, private or internal";
}

constexpr std::pair<std::string_view, RKTServiceSortKey> sortKeys[] = {
    {"default", RKTServiceSortKeyDefault}, {"identifier", RKTServiceSortKeyIdentifier},
    {"name", RKTServiceSortKeyName},       {"created", RKTServiceSortKeyCreated},
    {"updated", RKTServiceSortKeyUpdated}, {"last-activity", RKTServiceSortKeyLastActivity},
};

constexpr std::pair<std::string_view, RKTServiceSortDirection> sortDirections[] = {
    {"default", RKTServiceSortDirectionDefault},
    {"ascending", RKTServiceSortDirectionAscending},
    {"descending", RKTServiceSortDirectionDescending},
};

}  // namespace

RequestOptions::RequestOptions(CLI::App& command) {
    const auto add = [&command](const char* name, const char* type, auto take,
                                const char* description) {
        return command.add_option_function<std::string>(name, take, description)
            ->group("Selection")
            ->type_name(type);
    };
    RKTRepositoriesRequest& request = *request_;
    add(
        "--page", "N",
        [&request](const std::string& text) { request.setPage(parseNumber("--page", text)); },
        "Page to list; default: the first");
    add(
        "--per-page", "N",
        [&request](const std::string& text) {
            request.setCountPerPage(parseNumber("--per-page", text));
        },
        "Repositories on a page; default: the service's");
    add(
        "--sort", "KEY",
        [&request](const std::string& text) {
            request.setSortKey(parseKey<RKTServiceSortKey>("--sort", text, sortKeys));
        },
        "default, identifier, name, created, updated,\n"
        "last-activity or a number");
    add(
        "--direction", "DIR",
        [&request](const std::string& text) {
            request.setSortDirection(
                parseKey<RKTServiceSortDirection>("--direction", text, sortDirections));
        },
        "default, ascending, descending or a number");
    add(
        "--state", "S", [&request](const std::string& text) { request.setState(text); },
        "open or closed; default: any")
        ->check(checkState);
    add(
        "--visibility", "V", [&request](const std::string& text) { request.setVisibility(text); },
        "public, private or internal; default: any")
        ->check(checkVisibility);
}

}  // namespace korvogit
