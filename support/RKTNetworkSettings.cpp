#include "KorvoGitService/RKTNetworkSettings.h"

#include <memory>
#include <utility>

#include "support/SharedNetworkSettings.h"

namespace rkt {

SharedNetworkSettings& SharedNetworkSettings::instance() {
    static auto& instance = *new SharedNetworkSettings;  // threads may ask while the process exits
    return instance;
}

std::shared_ptr<const RKTNetworkSettings> SharedNetworkSettings::get() const {
    const std::lock_guard lock(mutex_);
    return settings_;
}

void SharedNetworkSettings::set(std::shared_ptr<const RKTNetworkSettings> settings) {
    const std::lock_guard lock(mutex_);
    settings_.swap(settings);
}

}  // namespace rkt

RKTNetworkSettings RKTNetworkSettings::shared() {
    return *rkt::SharedNetworkSettings::instance().get();
}

void RKTNetworkSettings::setShared(RKTNetworkSettings settings) {
    rkt::SharedNetworkSettings::instance().set(
        std::make_shared<const RKTNetworkSettings>(std::move(settings)));
}
