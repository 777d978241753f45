#include "benchmarks/floors/PageReader.h"

#include <string_view>

#include "benchmarks/common/Client.h"

namespace floors {
namespace {

using simdjson::dom::element;

void set(std::string& text, const element& value) {
    if (value.is_string()) text = std::string_view(value);
}

void readOwner(const element& value, Repository& repository) {
    for (const auto& [key, member] : simdjson::dom::object(value)) {
        if (key == "login") {
            set(repository.ownerName, member);
        } else if (key == "id") {
            repository.ownerIdentifier = member;
        }
    }
}

// The length tells most keys apart.
void readMember(std::string_view key, const element& value, Repository& repository) {
    switch (key.size()) {
        case 2:
            if (key == "id") repository.identifier = value;
            break;
        case 4:
            if (key == "name") set(repository.name, value);
            if (key == "fork") repository.fork = value;
            break;
        case 5:
            if (key == "owner") readOwner(value, repository);
            break;
        case 7:
            if (key == "ssh_url") set(repository.SSHURL, value);
            break;
        case 8:
            if (key == "html_url") set(repository.webURL, value);
            if (key == "archived") repository.archived = value;
            break;
        case 9:
            if (key == "full_name") set(repository.fullName, value);
            if (key == "clone_url") set(repository.HTTPSURL, value);
            break;
        case 10:
            if (key == "visibility") set(repository.visibility, value);
            break;
        case 11:
            if (key == "description") set(repository.description, value);
            if (key == "forks_count") repository.forks = value;
            break;
        case 14:
            if (key == "default_branch") set(repository.defaultBranch, value);
            break;
        case 16:
            if (key == "stargazers_count") repository.stars = value;
            break;
        default:
            break;
    }
}

}  // namespace

std::vector<Repository> PageReader::read(const simdjson::padded_string_view& text) {
    const auto page = parser_.parse(text.data(), text.size(), false);
    if (page.error()) bench::fail(simdjson::error_message(page.error()));
    const simdjson::dom::array elements = page;
    std::vector<Repository> repositories;
    repositories.reserve(elements.size());
    for (const element repository : elements) {
        auto& record = repositories.emplace_back();
        for (const auto& [key, value] : simdjson::dom::object(repository)) {
            readMember(key, value, record);
        }
    }
    return repositories;
}

}  // namespace floors
