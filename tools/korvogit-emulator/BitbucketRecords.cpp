#include "BitbucketRecords.h"

#include <nlohmann/json.hpp>

#include "Dates.h"
#include "Digest.h"
#include "Sorting.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

const std::string api = "https://api.bitbucket.org/2.0";
const std::string web = "https://bitbucket.org";

/// 8-4-4-4-12 hexadecimal digits, always the same for the same text.
std::string uuid(const std::string& text) {
    const auto digest = sha256(text);
    return digest.substr(0, 8) + "-" + digest.substr(8, 4) + "-4" + digest.substr(13, 3) + "-8" +
           digest.substr(17, 3) + "-" + digest.substr(20, 12);
}

std::string inBraces(const std::string& text) {
    return "{" + text + "}";
}

std::string isoDateWithOffset(std::int64_t seconds) {
    return isoDate(seconds).substr(0, 19) + ".418592+00:00";
}

Json link(const std::string& href) {
    return {{"href", href}};
}

/// Of a person or a workspace; only people have an account_id.
Json ownerRecord(const Owner& owner) {
    const auto id = uuid("owner " + owner.login);
    const std::string kind = owner.isOrganization ? "/teams/" : "/users/";
    Json json{{"type", owner.isOrganization ? "team" : "user"},
              {"display_name", owner.login},
              {"uuid", inBraces(id)},
              {"links",
               {{"self", link(api + kind + "%7B" + id + "%7D")},
                {"avatar", link(web + "/account/" + owner.login + "/avatar/")},
                {"html", link(web + "/%7B" + id + "%7D/")}}}};
    if (owner.isOrganization) {
        json["username"] = owner.login;
    } else {
        json["account_id"] = "557058:" + id;
        json["nickname"] = owner.login;
    }
    return json;
}

Json workspaceRecord(const Owner& owner) {
    return {{"type", "workspace"},
            {"uuid", inBraces(uuid("owner " + owner.login))},
            {"name", owner.login},
            {"slug", owner.login},
            {"links",
             {{"avatar", link(web + "/workspaces/" + owner.login + "/avatar/")},
              {"html", link(web + "/" + owner.login + "/")},
              {"self", link(api + "/workspaces/" + owner.login)}}}};
}

Json linksOf(const std::string& path, const std::string& viewer) {
    Json links;
    const std::string self = api + "/repositories/" + path;
    links["self"] = link(self);
    links["html"] = link(web + "/" + path);
    links["avatar"] = link("https://bytebucket.org/ravatar/%7B" + uuid(path) + "%7D?ts=default");
    for (const auto* name :
         {"pullrequests", "commits", "forks", "watchers", "downloads", "hooks"}) {
        links[name] = link(self + "/" + name);
    }
    links["branches"] = link(self + "/refs/branches");
    links["tags"] = link(self + "/refs/tags");
    links["source"] = link(self + "/src");
    const std::string user = viewer.empty() ? "" : viewer + "@";
    links["clone"] = Json::array({
        {{"name", "https"}, {"href", "https://" + user + "bitbucket.org/" + path + ".git"}},
        {{"name", "ssh"}, {"href", "git@bitbucket.org:" + path + ".git"}},
    });
    return links;
}

}  // namespace

std::string bitbucketUserRecord(const Account& account) {
    auto json = ownerRecord(account.asOwner());
    json["display_name"] = account.displayName;
    json["username"] = account.login;
    json["created_on"] = isoDateWithOffset(account.created);
    json["account_status"] = "active";
    json["is_staff"] = false;
    json["location"] = nullptr;
    return json.dump();
}

std::string bitbucketRepositoryRecord(const Repository& repository, const Account* viewer) {
    const std::string slug = lowered(repository.name);
    const std::string path = repository.owner.login + "/" + slug;
    return Json{
        {"type", "repository"},
        {"full_name", path},
        {"links", linksOf(path, viewer != nullptr ? viewer->login : "")},
        {"name", repository.name},
        {"slug", slug},
        {"description", repository.description.value_or("")},
        {"scm", "git"},
        {"website", repository.homepage.value_or("")},
        {"owner", ownerRecord(repository.owner)},
        {"workspace", workspaceRecord(repository.owner)},
        {"is_private", repository.visibility != Visibility::Public},
        {"fork_policy", "allow_forks"},
        {"created_on", isoDateWithOffset(repository.created)},
        {"updated_on", isoDateWithOffset(repository.updated)},
        {"size", repository.sizeInKilobytes * 1024},
        {"language", lowered(repository.language.value_or(""))},
        {"uuid", inBraces(uuid("repository " + std::to_string(repository.id)))},
        {"mainbranch", {{"name", repository.defaultBranch}, {"type", "branch"}}},
        {"override_settings", {{"default_merge_strategy", true}, {"branching_model", true}}},
        {"parent", nullptr},
        {"has_issues", false},
        {"has_wiki", false},
    }
        .dump();
}

}  // namespace emulator
