#include "GitLabListing.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "Dates.h"
#include "Sorting.h"

namespace emulator {

namespace {

/// What KorvoGitService sends for the date of the last activity; GitLab documents another name.
constexpr std::string_view undocumentedOrder = "last_activity_date";
constexpr std::string_view orderParameter = "order_by";

struct Choices {
    std::string_view name;
    std::vector<std::string_view> values;
};

const std::vector<Choices>& knownParameters() {
    static const std::vector<std::string_view> booleans{"true", "false", "1", "0", "t", "f"};
    static const std::vector<Choices> parameters{
        {orderParameter,
         {"id", "name", "path", "created_at", "updated_at", "last_activity_at", "star_count",
          "similarity"}},
        {"sort", {"asc", "desc"}},
        {"visibility", {"public", "private", "internal"}},
        {"min_access_level", {"10", "15", "20", "30", "40", "50"}},
        {"archived", booleans},
        {"membership", booleans},
        {"owned", booleans},
        {"simple", booleans},
    };
    return parameters;
}

std::string refusalOf(const Request& request, bool strict) {
    for (const auto& parameter : knownParameters()) {
        const auto value = request.queryValue(parameter.name);
        const bool tolerated =
            !strict && parameter.name == orderParameter && value == undocumentedOrder;
        if (value && !tolerated &&
            std::ranges::find(parameter.values, *value) == parameter.values.end()) {
            return std::string(parameter.name);
        }
    }
    return {};
}

bool isTrue(const std::optional<std::string>& value) {
    return value == "true" || value == "1" || value == "t";
}

int accessLevel(const Repository& repository) {
    constexpr int developer = 30;
    constexpr int owner = 50;
    return repository.owner.isOrganization ? developer : owner;
}

using Filter = std::function<bool(const Repository&)>;

std::vector<Filter> filtersOf(const Request& request) {
    std::vector<Filter> filters;
    if (const auto value = request.queryValue("archived")) {
        filters.emplace_back([=](const Repository& r) { return r.isArchived == isTrue(value); });
    }
    if (const auto value = request.queryValue("visibility")) {
        filters.emplace_back(
            [=](const Repository& r) { return visibilityName(r.visibility) == *value; });
    }
    if (const auto value = request.queryValue("min_access_level")) {
        const int least = std::stoi(*value);
        filters.emplace_back([=](const Repository& r) { return accessLevel(r) >= least; });
    }
    if (isTrue(request.queryValue("owned"))) {
        filters.emplace_back([](const Repository& r) { return !r.owner.isOrganization; });
    }
    if (const auto value = request.queryValue("search")) {
        filters.emplace_back([=](const Repository& r) {
            return lowered(r.name).find(lowered(*value)) != std::string::npos;
        });
    }
    return filters;
}

bool asksForOwn(const Request& request) {
    return request.queryValue("min_access_level") || isTrue(request.queryValue("membership")) ||
           isTrue(request.queryValue("owned"));
}

void sort(std::vector<const Repository*>& repositories, const Request& request) {
    const auto key = request.queryValue("order_by").value_or("created_at");
    const bool ascending = request.queryValue("sort") == "asc";
    if (key == "name" || key == "path") {
        sortBy(repositories, ascending, [](const Repository& r) { return lowered(r.name); });
        return;
    }
    auto Repository::* const member = key == "id"           ? &Repository::id
                                      : key == "updated_at" ? &Repository::updated
                                      : key == "created_at" ? &Repository::created
                                      : key == "star_count" ? &Repository::stars
                                                            : &Repository::pushed;
    sortBy(repositories, ascending, [&](const Repository& r) { return r.*member; });
}

}  // namespace

GitLabSelection selectGitLabProjects(const Request& request, const Accounts& accounts,
                                     const Account* viewer, bool strict) {
    GitLabSelection selection{.refusal = refusalOf(request, strict)};
    if (!selection.refusal.empty()) {
        return selection;
    }
    const bool isSimple = isTrue(request.queryValue("simple"));
    selection.detail = isSimple ? ProjectDetail::Simple : ProjectDetail::Full;
    const bool ownOnly = asksForOwn(request);
    const auto filters = filtersOf(request);
    for (const auto& account : accounts.all()) {
        for (const auto& repository : account.repositories) {
            const bool visible =
                &account == viewer || (!ownOnly && repository.visibility == Visibility::Public);
            if (visible && std::ranges::all_of(filters, [&](auto& f) { return f(repository); })) {
                selection.repositories.push_back(&repository);
            }
        }
    }
    sort(selection.repositories, request);
    return selection;
}

}  // namespace emulator
