#include <utility>

#include "KorvoGitService/KorvoCore.h"
#include "KorvoGitService/RKTURLComponents.h"

std::map<std::string, std::string, std::less<>> kc_queryParameters(const RKTURL& url) {
    std::map<std::string, std::string, std::less<>> parameters;
    const auto components = RKTURLComponents::componentsWithURL(url);
    auto items = components ? components->queryItems() : std::nullopt;
    if (!items) return parameters;
    for (RKTURLQueryItem& item : *items) {
        if (item.value) {
            parameters.insert_or_assign(std::move(item.name), std::move(*item.value));
        } else {
            parameters.erase(item.name);
        }
    }
    return parameters;
}
