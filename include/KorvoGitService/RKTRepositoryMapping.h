// From a service's JSON to repository records, by a table.

#ifndef KORVOGITSERVICE_RKTREPOSITORYMAPPING_H
#define KORVOGITSERVICE_RKTREPOSITORYMAPPING_H

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTJSON.h"
#include "KorvoGitService/RKTPackedTexts.h"
#include "KorvoGitService/RKTServiceRepository.h"
#include "KorvoGitService/RKTServiceRequest.h"

/// A line of a mapping table: where in the element the value stands, and what becomes of it.
struct RKTRepositoryField {
    /// Receives null when the element has no such value.
    using Apply = void (*)(RKTServiceRepository& repository, const RKTJSONValue* value);

    /// For a value in the element itself.
    RKTRepositoryField(std::string_view keyOfElement, Apply function)
        : key(keyOfElement), apply(function) {}
    /// For a value in a dictionary of the element.
    RKTRepositoryField(std::string_view keyOfElement, std::string_view keyOfDictionary,
                       Apply function)
        : key(keyOfElement), subkey(keyOfDictionary), apply(function) {}

    std::string_view key;     ///< of the element
    std::string_view subkey;  ///< of the dictionary under `key`; empty when the value stands in the
                              ///< element itself
    /// Never null. Called exactly once for each element.
    Apply apply;
};

/// Lines of the common kinds: the expected JSON type, the property's setter, and a conversion. A
/// value of another type counts as absent. Without a conversion the value is stored as it is, and
/// an absent one leaves the property alone; a conversion receives nothing for an absent value and
/// decides. A conversion may have a second parameter, std::string&: a text of its own that lives
/// until the property is set, so that it can give a view.
namespace RKTRepositoryFields {

struct AsIs {};

/// What the two kinds below do: reads a T, converts it, calls the setter.
template <class T, auto Setter, auto Conversion>
void apply(RKTServiceRepository& repository, const RKTJSONValue* value) {
    const std::optional<T> typed = value ? kc_valueOfClass<T>(*value) : std::nullopt;
    if constexpr (std::is_same_v<std::remove_const_t<decltype(Conversion)>, AsIs>) {
        if (typed) (repository.*Setter)(typed);
    } else if constexpr (std::is_invocable_v<decltype(Conversion), std::optional<T>,
                                             std::string&>) {
        std::string room;
        (repository.*Setter)(Conversion(typed, room));
    } else {
        (repository.*Setter)(Conversion(typed));
    }
}

/// A text.
template <auto Setter, auto Conversion = AsIs{}>
constexpr RKTRepositoryField::Apply string = apply<std::string_view, Setter, Conversion>;
/// A number; true and false are numbers.
template <auto Setter, auto Conversion = AsIs{}>
constexpr RKTRepositoryField::Apply number = apply<RKTNumber, Setter, Conversion>;

/// Conversions.

/// A plain URL (`URLWithString:`): a view of `text`, or of `room` when something must be encoded.
RKT_EXPORT std::optional<RKTURLView> plainURL(std::optional<std::string_view> text,
                                              std::string& room);
/// `rkt_URLWithString:`
RKT_EXPORT std::optional<RKTURL> cloneURL(std::optional<std::string_view> text);
/// true is closed; false and nothing are open.
RKT_EXPORT std::optional<std::string_view> closedWhenTrue(std::optional<RKTNumber> archived);
/// "public" and "internal" as they are; everything else, nothing included, is private: a repository
/// whose visibility is not known must not look public.
RKT_EXPORT std::optional<std::string_view> knownVisibility(
    std::optional<std::string_view> visibility);

}  // namespace RKTRepositoryFields

/// A mapping table, made ready once and used for every element. Immutable; safe from any thread.
///
/// An element is read in one pass, because services send many more members than anybody asked for.
/// Lines are applied in the order of the members, then those whose values are absent; each is
/// applied exactly once. Of two members with one name the first counts.
class RKT_EXPORT RKTRepositoryMapping {
public:
    /// More lines than a record has properties, few enough to be marked in one word.
    static constexpr std::size_t maximumFieldCount = 64;

    /// The keys are not copied: they are literals. No two lines have the same key and subkey, and
    /// no key stands both with and without a subkey.
    template <std::size_t count>
        requires(count <= maximumFieldCount)
    explicit RKTRepositoryMapping(const RKTRepositoryField (&fields)[count])
        : RKTRepositoryMapping(std::span<const RKTRepositoryField>(fields)) {}
    ~RKTRepositoryMapping();
    RKTRepositoryMapping(const RKTRepositoryMapping&) = delete;
    RKTRepositoryMapping& operator=(const RKTRepositoryMapping&) = delete;

    /// A new record with what the element has; never null.
    std::shared_ptr<RKTServiceRepository> repositoryWithDictionary(
        const RKTJSONDictionary& element) const;

    /// A record for every dictionary of the array, in order; other elements are skipped. They share
    /// their memory, see RKTServiceArrayResult::results().
    RKTServiceArrayResult::Results repositoriesWithArray(const RKTJSONArray& elements) const;

private:
    class Table;
    explicit RKTRepositoryMapping(std::span<const RKTRepositoryField> fields);

    struct Page;

    RKTServiceArrayResult::Results repositories(std::span<const RKTJSONDictionary> elements) const;
    /// @param page  with a new record for each element
    void fill(Page& page, std::span<const RKTJSONDictionary> elements) const;

    std::unique_ptr<const Table> table_;
};

#endif
