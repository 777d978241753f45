#include "RepositoryFields.h"

#include <optional>

namespace korvogit {

namespace {

FieldValue valueOf(std::string text) {
    return text;
}
FieldValue valueOf(RKTNumber number) {
    return number;
}
FieldValue valueOf(const RKTURL& url) {
    return url.absoluteString();
}
FieldValue valueOf(const RKTServiceIdentifier& identifier) {
    if (const auto number = identifier.numberValue()) return *number;
    return identifier.stringValue().value_or("");
}

template <auto Getter>
FieldValue valueOfProperty(const RKTServiceRepository& repository) {
    const auto property = (repository.*Getter)();
    return property ? valueOf(*property) : FieldValue();
}

using R = RKTServiceRepository;

constexpr RepositoryField fields[] = {
    {"identifier", valueOfProperty<&R::identifier>},
    {"name", valueOfProperty<&R::name>},
    {"fullName", valueOfProperty<&R::fullName>},
    {"descriptiveText", valueOfProperty<&R::descriptiveText>},
    {"path", valueOfProperty<&R::path>},
    {"fullPath", valueOfProperty<&R::fullPath>},
    {"ownerIdentifier", valueOfProperty<&R::ownerIdentifier>},
    {"ownerName", valueOfProperty<&R::ownerName>},
    {"state", valueOfProperty<&R::state>},
    {"visibility", valueOfProperty<&R::visibility>},
    {"isFork", valueOfProperty<&R::isFork>},
    {"numberOfStars", valueOfProperty<&R::numberOfStars>},
    {"numberOfForks", valueOfProperty<&R::numberOfForks>},
    {"avatarURL", valueOfProperty<&R::avatarURL>},
    {"webURL", valueOfProperty<&R::webURL>},
    {"SSHRepositoryURL", valueOfProperty<&R::SSHRepositoryURL>},
    {"HTTPSRepositoryURL", valueOfProperty<&R::HTTPSRepositoryURL>},
    {"defaultBranchName", valueOfProperty<&R::defaultBranchName>},
};

}  // namespace

std::string fieldText(const FieldValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    const auto* number = std::get_if<RKTNumber>(&value);
    if (number == nullptr) return "";
    if (number->type() != RKTNumber::Type::Boolean) return number->stringValue();
    return number->boolValue() ? "true" : "false";
}

std::span<const RepositoryField> repositoryFields() {
    return fields;
}

}  // namespace korvogit
