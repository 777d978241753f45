#include "adapters/PublicHost.h"

#include <utility>

namespace rkt {

RKTURLComponents componentsForHost(const char* host, std::string_view path) {
    RKTURLComponents components;
    components.setScheme("https");
    components.setHost(host);
    components.setPath(path);
    return components;
}

RKTURL URLForHost(const char* host, std::string_view path) {
    return componentsForHost(host, path).URL().value();
}

std::vector<RKTURLQueryItem> loginItems(const RKTServiceCredentials& credentials) {
    std::vector<RKTURLQueryItem> items;
    if (auto user = credentials.user()) items.push_back({"login", std::move(user)});
    return items;
}

}  // namespace rkt
