#pragma once

#include <algorithm>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "Accounts.h"

namespace emulator {

/// With ASCII letters in lower case, as services compare names.
inline std::string lowered(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

/// Sorts by what `keyOf` makes of a repository; equal ones by id, so that pages never overlap.
template <typename KeyOf>
void sortBy(std::vector<const Repository*>& repositories, bool ascending, KeyOf keyOf) {
    using Key = std::tuple<std::invoke_result_t<KeyOf, const Repository&>, std::int64_t>;
    std::vector<std::pair<Key, const Repository*>> keyed;
    keyed.reserve(repositories.size());
    for (const auto* repository : repositories) {
        keyed.emplace_back(Key{keyOf(*repository), repository->id}, repository);
    }
    std::ranges::sort(keyed);
    if (!ascending) {
        std::ranges::reverse(keyed);
    }
    std::ranges::transform(keyed, repositories.begin(), [](const auto& k) { return k.second; });
}

}  // namespace emulator
