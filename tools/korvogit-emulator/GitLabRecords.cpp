#include "GitLabRecords.h"

#include <nlohmann/json.hpp>

#include "Dates.h"
#include "Sorting.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

Json namespaceRecord(const std::string& web, const Owner& owner) {
    const char* const groups = owner.isOrganization ? "/groups/" : "/";
    return {
        {"id", owner.id},           {"name", owner.login},
        {"path", owner.login},      {"kind", owner.isOrganization ? "group" : "user"},
        {"full_path", owner.login}, {"parent_id", nullptr},
        {"avatar_url", nullptr},    {"web_url", web + groups + owner.login},
    };
}

void addIdentity(Json& json, const Repository& repository) {
    json["id"] = repository.id;
    json["description"] = repository.description ? Json(*repository.description) : Json(nullptr);
    json["name"] = repository.name;
    json["name_with_namespace"] = repository.owner.login + " / " + repository.name;
    json["path"] = lowered(repository.name);
    json["path_with_namespace"] = repository.owner.login + "/" + lowered(repository.name);
    json["created_at"] = isoDate(repository.created);
    json["updated_at"] = isoDate(repository.updated);
    json["default_branch"] = repository.defaultBranch;
    json["tag_list"] = repository.topics;
    json["topics"] = repository.topics;
}

void addAddresses(Json& json, const std::string& web, const std::string& host,
                  const Repository& repository) {
    const std::string path = repository.owner.login + "/" + lowered(repository.name);
    json["ssh_url_to_repo"] = "git@" + host + ":" + path + ".git";
    json["http_url_to_repo"] = web + "/" + path + ".git";
    json["web_url"] = web + "/" + path;
    json["readme_url"] = web + "/" + path + "/-/blob/" + repository.defaultBranch + "/README.md";
    json["avatar_url"] = nullptr;
    json["forks_count"] = repository.forks;
    json["star_count"] = repository.stars;
    json["last_activity_at"] = isoDate(repository.pushed);
    json["namespace"] = namespaceRecord(web, repository.owner);
}

void addLinks(Json& json, const std::string& web, const std::string& host,
              const Repository& repository) {
    json["container_registry_image_prefix"] =
        "registry." + host + "/" + repository.owner.login + "/" + lowered(repository.name);
    const std::string api = web + "/api/v4/projects/" + std::to_string(repository.id);
    json["_links"]["self"] = api;
    for (const auto& [name, rest] :
         {std::pair("issues", "/issues"), std::pair("merge_requests", "/merge_requests"),
          std::pair("repo_branches", "/repository/branches"), std::pair("labels", "/labels"),
          std::pair("events", "/events"), std::pair("members", "/members"),
          std::pair("cluster_agents", "/cluster_agents")}) {
        json["_links"][name] = api + rest;
    }
}

/// What a project can do, each for itself: most of a project's record.
void addFeatures(Json& json) {
    for (const auto* feature :
         {"issues", "repository", "merge_requests", "forking", "wiki", "builds", "snippets",
          "pages", "analytics", "container_registry", "releases", "environments", "feature_flags",
          "infrastructure", "monitor", "model_experiments", "model_registry"}) {
        json[feature + std::string("_access_level")] = "enabled";
    }
    json["security_and_compliance_access_level"] = "private";
    for (const auto* flag : {"packages_enabled",
                             "issues_enabled",
                             "merge_requests_enabled",
                             "wiki_enabled",
                             "jobs_enabled",
                             "container_registry_enabled",
                             "service_desk_enabled",
                             "can_create_merge_request_in",
                             "shared_runners_enabled",
                             "lfs_enabled",
                             "ci_forward_deployment_enabled",
                             "ci_job_token_scope_enabled",
                             "ci_separated_caches",
                             "public_jobs",
                             "request_access_enabled",
                             "remove_source_branch_after_merge",
                             "printing_merge_request_link_enabled",
                             "autoclose_referenced_issues",
                             "keep_latest_artifact",
                             "enforce_auth_checks_on_uploads"}) {
        json[flag] = true;
    }
    for (const auto* flag :
         {"snippets_enabled", "resolve_outdated_diff_discussions", "emails_disabled",
          "only_allow_merge_if_pipeline_succeeds", "restrict_user_defined_variables",
          "only_allow_merge_if_all_discussions_are_resolved", "auto_devops_enabled"}) {
        json[flag] = false;
    }
    json["container_expiration_policy"] = {{"cadence", "1d"},
                                           {"enabled", false},
                                           {"keep_n", 10},
                                           {"older_than", "90d"},
                                           {"name_regex", ".*"},
                                           {"name_regex_keep", nullptr},
                                           {"next_run_at", "2024-05-02T17:30:44.740Z"}};
}

void addSettings(Json& json, const Repository& repository) {
    json["creator_id"] = repository.owner.id;
    json["import_status"] = "none";
    json["open_issues_count"] = repository.openIssues;
    json["description_html"] = "<p data-sourcepos=\"1:1-1:1\" dir=\"auto\"></p>";
    json["ci_default_git_depth"] = 20;
    json["build_timeout"] = 3600;
    json["auto_cancel_pending_pipelines"] = "enabled";
    json["ci_config_path"] = "";
    json["shared_with_groups"] = Json::array();
    json["allow_merge_on_skipped_pipeline"] = nullptr;
    json["merge_method"] = "merge";
    json["squash_option"] = "default_off";
    json["suggestion_commit_message"] = nullptr;
    json["merge_commit_template"] = nullptr;
    json["squash_commit_template"] = nullptr;
    json["auto_devops_deploy_strategy"] = "continuous";
    json["runner_token_expiration_interval"] = nullptr;
    json["external_authorization_classification_label"] = "";
    const int level = repository.owner.isOrganization ? 30 : 50;
    const Json access = {{"access_level", level}, {"notification_level", 3}};
    json["permissions"]["project_access"] = repository.owner.isOrganization ? Json() : access;
    json["permissions"]["group_access"] = repository.owner.isOrganization ? access : Json();
}

}  // namespace

std::string gitLabUserRecord(const std::string& web, const Account& account) {
    return Json{
        {"id", account.id},
        {"username", account.login},
        {"name", account.displayName},
        {"state", "active"},
        {"locked", false},
        {"avatar_url", nullptr},
        {"web_url", web + "/" + account.login},
        {"created_at", isoDate(account.created)},
        {"bio", ""},
        {"location", nullptr},
        {"public_email", nullptr},
        {"email", account.email},
        {"two_factor_enabled", true},
        {"external", false},
        {"private_profile", false},
        {"commit_email", account.email},
    }
        .dump();
}

std::string gitLabProjectRecord(const std::string& web, const std::string& host,
                                const Repository& repository, ProjectDetail detail) {
    Json json;
    addIdentity(json, repository);
    addAddresses(json, web, host, repository);
    if (detail == ProjectDetail::Simple) return json.dump();
    addLinks(json, web, host, repository);
    json["empty_repo"] = false;
    json["archived"] = repository.isArchived;
    json["visibility"] = visibilityName(repository.visibility);
    addFeatures(json);
    addSettings(json, repository);
    return json.dump();
}

}  // namespace emulator
