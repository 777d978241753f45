#include "fuzz/common/Properties.h"

#include <optional>
#include <string_view>

#include "KorvoGitService/KorvoGit.h"

namespace fuzz {

namespace {

using plain::JSON;
using Text = std::optional<std::string>;

std::string shown(const std::string& text) {
    return text;
}
std::string shown(const RKTURL& url) {
    return url.absoluteString();
}
std::string shown(const RKTNumber& number) {
    return plain::tagged(number);
}
std::string shown(const RKTServiceIdentifier& identifier) {
    const auto number = identifier.numberValue();
    return number ? shown(*number) : "t" + identifier.description();
}

template <class Value>
void set(Properties& properties, const char* name, const std::optional<Value>& value) {
    if (value) properties[name] = shown(*value);
}

void setNumberIdentifier(Properties& properties, const char* name,
                         const std::optional<RKTNumber>& number) {
    if (number) properties[name] = shown(*number);
}

void setTextIdentifier(Properties& properties, const char* name, const Text& text) {
    if (text) properties[name] = "t" + *text;
}

std::optional<RKTURL> url(const Text& text) {
    return text ? RKTURL::URLWithString(*text) : std::nullopt;
}
std::optional<RKTURL> cloneURL(const Text& text) {
    return text ? rkt_URLWithString(*text) : std::nullopt;
}

bool isTrue(const JSON& element, std::string_view key) {
    const auto number = element.get<RKTNumber>(key);
    return number && *number != RKTNumber(false);
}

std::string visibility(const Text& text) {
    return text == "public" || text == "internal" ? *text : "private";
}

/// The last address of each name counts, unless it is empty.
void setCloneURLs(Properties& properties, const JSON& element, bool takesHTTP) {
    const auto entries = element.get<JSON::Elements>("links", "clone");
    for (const auto& entry : entries.value_or(JSON::Elements())) {
        const auto name = entry.get<std::string>("name");
        const auto href = entry.get<std::string>("href");
        if (!name || !href || href->empty()) continue;
        const bool isHTTP = *name == "https" || (takesHTTP && *name == "http");
        if (!isHTTP && *name != "ssh") continue;
        const char* property = isHTTP ? "HTTPSRepositoryURL" : "SSHRepositoryURL";
        properties.erase(property);
        set(properties, property, cloneURL(href));
    }
}

void setCommon(Properties& properties, const JSON& element) {
    set(properties, "name", element.get<std::string>("name"));
    set(properties, "descriptiveText", element.get<std::string>("description"));
}

/// What GitHub and GitLab have under the same names.
void setCommonOfLists(Properties& properties, const JSON& element) {
    setCommon(properties, element);
    setNumberIdentifier(properties, "identifier", element.get<RKTNumber>("id"));
    properties["state"] = isTrue(element, "archived") ? "closed" : "open";
    properties["visibility"] = visibility(element.get<std::string>("visibility"));
    set(properties, "numberOfForks", element.get<RKTNumber>("forks_count"));
    set(properties, "defaultBranchName", element.get<std::string>("default_branch"));
}

}  // namespace

Properties propertiesOf(const RKTServiceRepository& repository) {
    Properties properties;
    set(properties, "identifier", repository.identifier());
    set(properties, "name", repository.name());
    set(properties, "fullName", repository.fullName());
    set(properties, "descriptiveText", repository.descriptiveText());
    set(properties, "path", repository.path());
    set(properties, "fullPath", repository.fullPath());
    set(properties, "ownerIdentifier", repository.ownerIdentifier());
    set(properties, "ownerName", repository.ownerName());
    set(properties, "state", repository.state());
    set(properties, "visibility", repository.visibility());
    set(properties, "isFork", repository.isFork());
    set(properties, "numberOfStars", repository.numberOfStars());
    set(properties, "numberOfForks", repository.numberOfForks());
    set(properties, "avatarURL", repository.avatarURL());
    set(properties, "webURL", repository.webURL());
    set(properties, "SSHRepositoryURL", repository.SSHRepositoryURL());
    set(properties, "HTTPSRepositoryURL", repository.HTTPSRepositoryURL());
    set(properties, "defaultBranchName", repository.defaultBranchName());
    return properties;
}

Properties expectedOfGitHub(const JSON& element) {
    Properties properties;
    setCommonOfLists(properties, element);
    set(properties, "fullName", element.get<std::string>("full_name"));
    setNumberIdentifier(properties, "ownerIdentifier", element.get<RKTNumber>("owner", "id"));
    set(properties, "ownerName", element.get<std::string>("owner", "login"));
    set(properties, "isFork", element.get<RKTNumber>("fork"));
    set(properties, "numberOfStars", element.get<RKTNumber>("stargazers_count"));
    set(properties, "webURL", url(element.get<std::string>("html_url")));
    set(properties, "SSHRepositoryURL", cloneURL(element.get<std::string>("ssh_url")));
    set(properties, "HTTPSRepositoryURL", url(element.get<std::string>("clone_url")));
    return properties;
}

Properties expectedOfGitLab(const JSON& element) {
    Properties properties;
    setCommonOfLists(properties, element);
    set(properties, "fullName", element.get<std::string>("name_with_namespace"));
    set(properties, "path", element.get<std::string>("path"));
    set(properties, "fullPath", element.get<std::string>("path_with_namespace"));
    setNumberIdentifier(properties, "ownerIdentifier", element.get<RKTNumber>("namespace", "id"));
    set(properties, "ownerName", element.get<std::string>("namespace", "name"));
    set(properties, "numberOfStars", element.get<RKTNumber>("star_count"));
    set(properties, "webURL", url(element.get<std::string>("web_url")));
    set(properties, "SSHRepositoryURL", cloneURL(element.get<std::string>("ssh_url_to_repo")));
    set(properties, "HTTPSRepositoryURL", url(element.get<std::string>("http_url_to_repo")));
    return properties;
}

Properties expectedOfBitbucket(const JSON& element) {
    Properties properties;
    setCommon(properties, element);
    setTextIdentifier(properties, "identifier", element.get<std::string>("uuid"));
    set(properties, "fullName", element.get<std::string>("full_name"));
    setTextIdentifier(properties, "ownerIdentifier",
                      element.get<std::string>("owner", "account_id"));
    set(properties, "ownerName", element.get<std::string>("owner", "display_name"));
    properties["visibility"] = isTrue(element, "is_private") ? "private" : "public";
    set(properties, "webURL", url(element.get<std::string>("links", "html")));
    set(properties, "defaultBranchName", element.get<std::string>("mainbranch", "name"));
    setCloneURLs(properties, element, false);
    return properties;
}

Properties expectedOfBitbucketServer(const JSON& element) {
    Properties properties;
    setCommon(properties, element);
    setNumberIdentifier(properties, "identifier", element.get<RKTNumber>("id"));
    set(properties, "fullName", element.get<std::string>("full_name"));
    properties["visibility"] = isTrue(element, "public") ? "public" : "private";
    setCloneURLs(properties, element, true);
    return properties;
}

}  // namespace fuzz
