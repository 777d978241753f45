#include "GitHubRecords.h"

#include <array>
#include <nlohmann/json.hpp>

#include "Dates.h"
#include "Digest.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;
/// Appending here is quick; setting a member by name would look through all the others first.
using Members = std::vector<std::pair<const std::string, Json>>;

template <typename T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

std::string nodeId(std::string_view kind, std::int64_t id) {
    return std::string(kind) + base64(std::to_string(id));
}

Json ownerRecord(const GitHubAddresses& addresses, const Owner& owner) {
    const std::string url = addresses.api + "/users/" + owner.login;
    return {
        {"login", owner.login},
        {"id", owner.id},
        {"node_id", nodeId(owner.isOrganization ? "O_" : "U_", owner.id)},
        {"avatar_url", addresses.avatars + "/u/" + std::to_string(owner.id) + "?v=4"},
        {"gravatar_id", ""},
        {"url", url},
        {"html_url", addresses.web + "/" + owner.login},
        {"followers_url", url + "/followers"},
        {"following_url", url + "/following{/other_user}"},
        {"gists_url", url + "/gists{/gist_id}"},
        {"starred_url", url + "/starred{/owner}{/repo}"},
        {"subscriptions_url", url + "/subscriptions"},
        {"organizations_url", url + "/orgs"},
        {"repos_url", url + "/repos"},
        {"events_url", url + "/events{/privacy}"},
        {"received_events_url", url + "/received_events"},
        {"type", owner.isOrganization ? "Organization" : "User"},
        {"user_view_type", "public"},
        {"site_admin", false},
    };
}

/// Every member that is an address below the repository's own: its name and what is appended.
constexpr std::array<std::pair<const char*, const char*>, 37> addressMembers{{
    {"forks_url", "/forks"},
    {"keys_url", "/keys{/key_id}"},
    {"collaborators_url", "/collaborators{/collaborator}"},
    {"teams_url", "/teams"},
    {"hooks_url", "/hooks"},
    {"issue_events_url", "/issues/events{/number}"},
    {"events_url", "/events"},
    {"assignees_url", "/assignees{/user}"},
    {"branches_url", "/branches{/branch}"},
    {"tags_url", "/tags"},
    {"blobs_url", "/git/blobs{/sha}"},
    {"git_tags_url", "/git/tags{/sha}"},
    {"git_refs_url", "/git/refs{/sha}"},
    {"trees_url", "/git/trees{/sha}"},
    {"statuses_url", "/statuses/{sha}"},
    {"languages_url", "/languages"},
    {"stargazers_url", "/stargazers"},
    {"contributors_url", "/contributors"},
    {"subscribers_url", "/subscribers"},
    {"subscription_url", "/subscription"},
    {"commits_url", "/commits{/sha}"},
    {"git_commits_url", "/git/commits{/sha}"},
    {"comments_url", "/comments{/number}"},
    {"issue_comment_url", "/issues/comments{/number}"},
    {"contents_url", "/contents/{+path}"},
    {"compare_url", "/compare/{base}...{head}"},
    {"merges_url", "/merges"},
    {"archive_url", "/{archive_format}{/ref}"},
    {"downloads_url", "/downloads"},
    {"issues_url", "/issues{/number}"},
    {"pulls_url", "/pulls{/number}"},
    {"milestones_url", "/milestones{/number}"},
    {"notifications_url", "/notifications{?since,all,participating}"},
    {"labels_url", "/labels{/name}"},
    {"releases_url", "/releases{/id}"},
    {"deployments_url", "/deployments"},
    {"url", ""},
}};

void addIdentity(Members& json, const GitHubAddresses& addresses, const Repository& repository) {
    json.emplace_back("id", repository.id);
    json.emplace_back("node_id", nodeId("R_", repository.id));
    json.emplace_back("name", repository.name);
    json.emplace_back("full_name", repository.fullName());
    json.emplace_back("private", repository.visibility != Visibility::Public);
    json.emplace_back("owner", ownerRecord(addresses, repository.owner));
    json.emplace_back("html_url", addresses.web + "/" + repository.fullName());
    json.emplace_back("description", orNull(repository.description));
    json.emplace_back("fork", repository.isFork);
}

void addAddresses(Members& json, const GitHubAddresses& addresses, const Repository& repository) {
    const std::string api = addresses.api + "/repos/" + repository.fullName();
    for (const auto& [name, rest] : addressMembers) {
        json.emplace_back(name, api + rest);
    }
    const std::string path = repository.fullName() + ".git";
    json.emplace_back("git_url", "git://" + addresses.host + "/" + path);
    json.emplace_back("ssh_url", "git@" + addresses.host + ":" + path);
    json.emplace_back("clone_url", addresses.web + "/" + path);
    json.emplace_back("svn_url", addresses.web + "/" + repository.fullName());
    json.emplace_back("homepage", orNull(repository.homepage));
    json.emplace_back("mirror_url", nullptr);
}

Json licenseRecord(const GitHubAddresses& addresses, const Repository& repository) {
    if (!repository.license) {
        return nullptr;
    }
    std::string key = *repository.license;
    for (char& c : key) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return {{"key", key},
            {"name", *repository.license + " License"},
            {"spdx_id", *repository.license},
            {"url", addresses.api + "/licenses/" + key},
            {"node_id", nodeId("L_", static_cast<std::int64_t>(key.size()))}};
}

void addFacts(Members& json, const GitHubAddresses& addresses, const Repository& repository) {
    json.emplace_back("created_at", isoDate(repository.created));
    json.emplace_back("updated_at", isoDate(repository.updated));
    json.emplace_back("pushed_at", isoDate(repository.pushed));
    json.emplace_back("size", repository.sizeInKilobytes);
    json.emplace_back("stargazers_count", repository.stars);
    json.emplace_back("watchers_count", repository.stars);
    json.emplace_back("language", orNull(repository.language));
    json.emplace_back("has_issues", !repository.isFork);
    json.emplace_back("has_projects", true);
    json.emplace_back("has_downloads", true);
    json.emplace_back("has_wiki", repository.id % 3 != 0);
    json.emplace_back("has_pages", repository.homepage.has_value());
    json.emplace_back("has_discussions", repository.id % 5 == 0);
    json.emplace_back("forks_count", repository.forks);
    json.emplace_back("archived", repository.isArchived);
    json.emplace_back("disabled", false);
    json.emplace_back("open_issues_count", repository.openIssues);
    json.emplace_back("license", licenseRecord(addresses, repository));
    json.emplace_back("allow_forking", repository.visibility != Visibility::Internal);
    json.emplace_back("is_template", repository.id % 41 == 0);
    json.emplace_back("web_commit_signoff_required", false);
    json.emplace_back("topics", repository.topics);
    json.emplace_back("visibility", visibilityName(repository.visibility));
    json.emplace_back("forks", repository.forks);
    json.emplace_back("open_issues", repository.openIssues);
    json.emplace_back("watchers", repository.stars);
    json.emplace_back("default_branch", repository.defaultBranch);
}

}  // namespace

std::string gitHubUserRecord(const GitHubAddresses& addresses, const Account& account) {
    Json json = ownerRecord(addresses, account.asOwner());
    const auto owned = std::ranges::count(account.repositories, account.login,
                                          [](const auto& r) { return r.owner.login; });
    json["name"] = account.displayName;
    json["company"] = nullptr;
    json["blog"] = "";
    json["location"] = nullptr;
    json["email"] = account.email;
    json["hireable"] = nullptr;
    json["bio"] = nullptr;
    json["twitter_username"] = nullptr;
    json["public_repos"] = std::ranges::count_if(account.repositories, [&](const auto& r) {
        return r.owner.login == account.login && r.visibility == Visibility::Public;
    });
    json["public_gists"] = 0;
    json["followers"] = account.id % 97;
    json["following"] = account.id % 31;
    json["created_at"] = isoDate(account.created);
    json["updated_at"] = isoDate(account.created + 86400);
    json["total_private_repos"] = owned - json["public_repos"].get<std::int64_t>();
    json["owned_private_repos"] = json["total_private_repos"];
    json["two_factor_authentication"] = true;
    json["plan"] = {
        {"name", "pro"}, {"space", 976'562'499}, {"collaborators", 0}, {"private_repos", 9999}};
    return json.dump();
}

std::string gitHubRepositoryRecord(const GitHubAddresses& addresses, const Repository& repository,
                                   const Account& viewer) {
    Json json = Json::object();
    Members& members = json.get_ref<Json::object_t&>();
    addIdentity(members, addresses, repository);
    addAddresses(members, addresses, repository);
    addFacts(members, addresses, repository);
    const bool own = repository.owner.login == viewer.login;
    json["permissions"] = {{"admin", own},
                           {"maintain", own},
                           {"push", own || repository.visibility != Visibility::Public},
                           {"triage", true},
                           {"pull", true}};
    return json.dump();
}

}  // namespace emulator
