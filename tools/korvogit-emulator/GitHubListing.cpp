#include "GitHubListing.h"

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <tuple>

#include "Dates.h"
#include "Sorting.h"

namespace emulator {

namespace {

constexpr auto documentation =
    "https://docs.github.com/rest/repos/repos#list-repositories-for-the-authenticated-user";

std::string validationFailed(const std::string& field, const std::string& code,
                             const std::string& message) {
    nlohmann::ordered_json error{{"resource", "Repository"}, {"field", field}, {"code", code}};
    if (!message.empty()) {
        error["message"] = message;
    }
    return nlohmann::ordered_json{{"message", "Validation Failed"},
                                  {"errors", nlohmann::ordered_json::array({error})},
                                  {"documentation_url", documentation},
                                  {"status", "422"}}
        .dump();
}

struct Choices {
    const char* name;
    std::vector<std::string> values;
};

const std::vector<Choices>& knownParameters() {
    static const std::vector<Choices> parameters{
        {"visibility", {"all", "public", "private", "internal"}},
        {"type", {"all", "owner", "public", "private", "member"}},
        {"sort", {"created", "updated", "pushed", "full_name"}},
        {"direction", {"asc", "desc"}},
    };
    return parameters;
}

std::string refusalOf(const Request& request) {
    if (request.queryValue("type") &&
        (request.queryValue("visibility") || request.queryValue("affiliation"))) {
        return validationFailed("type", "invalid",
                                "\"type\" cannot be used with \"visibility\" or \"affiliation\".");
    }
    for (const auto& parameter : knownParameters()) {
        const auto value = request.queryValue(parameter.name);
        if (value && std::ranges::find(parameter.values, *value) == parameter.values.end()) {
            return validationFailed(parameter.name, "invalid", "");
        }
    }
    return {};
}

using Filter = std::function<bool(const Repository&)>;

Filter visibilityFilter(const std::string& visibility) {
    return [visibility](const Repository& r) {
        return visibility == "all" || visibilityName(r.visibility) == visibility;
    };
}

Filter typeFilter(const std::string& type, const std::string& login) {
    return [type, login](const Repository& r) {
        const bool own = r.owner.login == login;
        return type == "all" || (type == "owner" && own) || (type == "member" && !own) ||
               visibilityName(r.visibility) == type;
    };
}

Filter affiliationFilter(const std::string& affiliation, const std::string& login) {
    const bool owned = affiliation.find("owner") != affiliation.npos;
    const bool inOrganization = affiliation.find("organization_member") != affiliation.npos;
    return [=](const Repository& r) {
        return r.owner.login == login ? owned : inOrganization && r.owner.isOrganization;
    };
}

std::vector<Filter> filtersOf(const Request& request, const std::string& login) {
    std::vector<Filter> filters;
    if (const auto value = request.queryValue("visibility")) {
        filters.push_back(visibilityFilter(*value));
    }
    if (const auto value = request.queryValue("type")) {
        filters.push_back(typeFilter(*value, login));
    }
    if (const auto value = request.queryValue("affiliation")) {
        filters.push_back(affiliationFilter(*value, login));
    }
    if (const auto value = request.queryValue("since")) {
        filters.emplace_back([=](const Repository& r) { return isoDate(r.updated) > *value; });
    }
    if (const auto value = request.queryValue("before")) {
        filters.emplace_back([=](const Repository& r) { return isoDate(r.updated) < *value; });
    }
    return filters;
}

bool mayList(const Repository& repository, const Accounts::Holder& holder) {
    const auto& scopes = holder.token->scopes;
    return repository.visibility == Visibility::Public ||
           std::ranges::find(scopes, "repo") != scopes.end();
}

void sort(std::vector<const Repository*>& repositories, const Request& request) {
    const auto key = request.queryValue("sort").value_or("full_name");
    const auto direction =
        request.queryValue("direction").value_or(key == "full_name" ? "asc" : "desc");
    const bool ascending = direction == "asc";
    if (key == "full_name") {
        sortBy(repositories, ascending, [](const Repository& r) { return lowered(r.fullName()); });
        return;
    }
    auto Repository::* const date = key == "created"   ? &Repository::created
                                    : key == "updated" ? &Repository::updated
                                                       : &Repository::pushed;
    sortBy(repositories, ascending, [&](const Repository& r) { return r.*date; });
}

}  // namespace

GitHubSelection selectGitHubRepositories(const Request& request, const Accounts::Holder& holder) {
    GitHubSelection selection;
    selection.refusal = refusalOf(request);
    if (!selection.refusal.empty()) {
        return selection;
    }
    const bool withoutOrganizations =
        holder.account->restriction == Restriction::PartialSingleSignOn;
    const auto filters = filtersOf(request, holder.account->login);
    for (const auto& repository : holder.account->repositories) {
        if (withoutOrganizations && repository.owner.isOrganization) {
            selection.leftOut = true;
        } else if (mayList(repository, holder) &&
                   std::ranges::all_of(filters, [&](const auto& f) { return f(repository); })) {
            selection.repositories.push_back(&repository);
        }
    }
    sort(selection.repositories, request);
    return selection;
}

}  // namespace emulator
