#pragma once

#include <KorvoGitService/RKTNumber.h>
#include <KorvoGitService/RKTServiceRepository.h>

#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace korvogit {

/// A property's value: unset, a text (URLs are texts here), or a number.
using FieldValue = std::variant<std::monostate, std::string, RKTNumber>;

struct RepositoryField {
    std::string_view name;
    FieldValue (*value)(const RKTServiceRepository& repository);
};

/// For a person: a number in decimals, a boolean as a word, nothing for an unset property.
std::string fieldText(const FieldValue& value);

/// All properties of a repository by their names, in the order of their declaration.
std::span<const RepositoryField> repositoryFields();

}  // namespace korvogit
