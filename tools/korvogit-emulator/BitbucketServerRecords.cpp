#include "BitbucketServerRecords.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "Sorting.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

/// A person's own project has "~" before the name; others have keys in capitals.
std::string projectKey(const Owner& owner) {
    if (!owner.isOrganization) {
        return "~" + owner.login;
    }
    std::string key = owner.login;
    std::ranges::transform(key, key.begin(), [](unsigned char c) {
        return static_cast<char>(c == '-' ? '_' : std::toupper(c));
    });
    return key;
}

Json selfLink(const std::string& href) {
    return {{"self", Json::array({{{"href", href}}})}};
}

Json projectRecord(const std::string& web, const Owner& owner) {
    const auto key = projectKey(owner);
    Json json{{"key", key}, {"id", owner.id}, {"name", owner.login}};
    if (owner.isOrganization) {
        json["public"] = false;
        json["type"] = "NORMAL";
        json["links"] = selfLink(web + "/projects/" + key);
    } else {
        json["type"] = "PERSONAL";
        json["owner"] = {{"name", owner.login}, {"id", owner.id}, {"slug", owner.login}};
        json["links"] = selfLink(web + "/users/" + owner.login);
    }
    return json;
}

}  // namespace

std::string bitbucketServerUserRecord(const std::string& web, const Account& account) {
    return Json{{"name", account.login}, {"emailAddress", account.email},
                {"active", true},        {"displayName", account.displayName},
                {"id", account.id},      {"slug", account.login},
                {"type", "NORMAL"},      {"links", selfLink(web + "/users/" + account.login)}}
        .dump();
}

std::string bitbucketServerRepositoryRecord(const std::string& web, const std::string& host,
                                            const Repository& repository) {
    const auto key = projectKey(repository.owner);
    const auto slug = lowered(repository.name);
    const std::string path = lowered(key) + "/" + slug + ".git";
    auto links = selfLink(web + "/projects/" + key + "/repos/" + slug + "/browse");
    // The name is "http" whatever the scheme of the address.
    links["clone"] =
        Json::array({{{"href", "ssh://git@" + host + ":7999/" + path}, {"name", "ssh"}},
                     {{"href", web + "/scm/" + path}, {"name", "http"}}});
    Json json{{"slug", slug},
              {"id", repository.id},
              {"name", repository.name},
              {"hierarchyId", std::to_string(repository.id * 7919)},
              {"scmId", "git"},
              {"state", "AVAILABLE"},
              {"statusMessage", "Available"},
              {"forkable", true},
              {"project", projectRecord(web, repository.owner)},
              {"public", repository.visibility == Visibility::Public},
              {"archived", repository.isArchived},
              {"links", links}};
    if (repository.description) {
        json["description"] = *repository.description;
    }
    return json.dump();
}

}  // namespace emulator
