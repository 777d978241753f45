#include "tests/helpers/Adapters.h"

#include <stdexcept>
#include <utility>

namespace {

using nlohmann::json;

json value(const std::string& text) {
    return text;
}

json value(const RKTURL& url) {
    return url.absoluteString();
}

json value(const RKTNumber& number) {
    switch (number.type()) {
        case RKTNumber::Type::Boolean:
            return number.boolValue();
        case RKTNumber::Type::Signed:
            return number.integerValue();
        case RKTNumber::Type::Unsigned:
            return number.unsignedIntegerValue();
        case RKTNumber::Type::Floating:
            break;
    }
    return number.doubleValue();
}

json value(const RKTServiceIdentifier& identifier) {
    const auto number = identifier.numberValue();
    return number ? value(*number) : value(identifier.description());
}

}  // namespace

std::optional<std::string> text(const std::optional<RKTURL>& url) {
    return url ? std::optional(url->absoluteString()) : std::nullopt;
}

std::shared_ptr<RKTRepositoriesRequest> sortedBy(std::uint64_t key, std::uint64_t direction) {
    auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setSortKey(static_cast<RKTServiceSortKey>(key));
    request->setSortDirection(static_cast<RKTServiceSortDirection>(direction));
    return request;
}

std::shared_ptr<RKTRepositoriesRequest> withVisibility(const char* visibility) {
    auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setVisibility(visibility);
    return request;
}

std::shared_ptr<RKTRepositoriesRequest> withState(const char* state) {
    auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setState(state);
    return request;
}

std::shared_ptr<RKTRepositoriesRequest> pageOf(std::optional<RKTNumber> page,
                                               std::optional<RKTNumber> countPerPage) {
    auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setPage(page);
    request->setCountPerPage(countPerPage);
    return request;
}

std::map<std::string, std::string> listingQuery(
    const std::shared_ptr<RKTService>& service,
    const std::shared_ptr<const RKTRepositoriesRequest>& request) {
    const auto url = RKTURL::URLWithString(listingURL(*service, request).value());
    const auto components = RKTURLComponents::componentsWithURL(url.value());
    std::map<std::string, std::string> query;
    for (const auto& item : components->queryItems().value_or(std::vector<RKTURLQueryItem>())) {
        if (!query.emplace(item.name, item.value.value_or("(none)")).second) {
            throw std::runtime_error("a name came twice");
        }
    }
    return query;
}

RKTServiceArrayResult::Results resultsOf(const RKTServiceArrayResult& result) {
    return result.results().value();
}

json propertiesOf(const RKTServiceRepository& repository) {
    json properties = json::object();
    const auto add = [&](const char* name, const auto& property) {
        if (property) properties[name] = value(*property);
    };
    add("identifier", repository.identifier());
    add("name", repository.name());
    add("fullName", repository.fullName());
    add("descriptiveText", repository.descriptiveText());
    add("path", repository.path());
    add("fullPath", repository.fullPath());
    add("ownerIdentifier", repository.ownerIdentifier());
    add("ownerName", repository.ownerName());
    add("state", repository.state());
    add("visibility", repository.visibility());
    add("isFork", repository.isFork());
    add("numberOfStars", repository.numberOfStars());
    add("numberOfForks", repository.numberOfForks());
    add("avatarURL", repository.avatarURL());
    add("webURL", repository.webURL());
    add("SSHRepositoryURL", repository.SSHRepositoryURL());
    add("HTTPSRepositoryURL", repository.HTTPSRepositoryURL());
    add("defaultBranchName", repository.defaultBranchName());
    return properties;
}

std::shared_ptr<RKTServiceArrayResult> AdapterTest::listed(
    emulator::Answer answer, const std::shared_ptr<const RKTRepositoriesRequest>& request) {
    origin.server.script({}, std::move(answer), 1);
    return list(*service(), request);
}

std::optional<RKTError> AdapterTest::validated(emulator::Answer answer) {
    origin.server.script({}, std::move(answer), 1);
    return validate(*service());
}

std::optional<std::string> AdapterTest::authorization(const char* credentialType,
                                                      const std::optional<std::string>& user,
                                                      const std::optional<std::string>& token) {
    const auto changed = credentials();
    changed->setCredentialType(credentialType);
    changed->setUser(user);
    changed->setToken(token);
    validate(*serviceWith(changed));
    return lastRequest().headers.get("Authorization");
}
