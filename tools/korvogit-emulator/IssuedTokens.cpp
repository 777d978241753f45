#include "IssuedTokens.h"

namespace emulator {

IssuedTokens& IssuedTokens::operator=(const IssuedTokens& other) {
    if (this != &other) {
        const std::lock_guard lock(mutex_);
        byValue_.clear();
    }
    return *this;
}

void IssuedTokens::add(std::string login, Token token) {
    const std::lock_guard lock(mutex_);
    std::string value = token.value;
    byValue_.emplace(std::move(value), std::pair(std::move(login), std::move(token)));
}

std::pair<std::string_view, const Token*> IssuedTokens::find(std::string_view value) const {
    const std::lock_guard lock(mutex_);
    const auto found = byValue_.find(value);
    if (found == byValue_.end()) {
        return {{}, nullptr};
    }
    return {found->second.first, &found->second.second};
}

}  // namespace emulator
