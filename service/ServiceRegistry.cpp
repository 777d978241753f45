#include "service/ServiceRegistry.h"

#include <mutex>
#include <string>
#include <utility>

namespace rkt {

ServiceRegistry& ServiceRegistry::shared() {
    static ServiceRegistry& registry = *[] {
        auto* filled = new ServiceRegistry;
        registerBuiltInAdapters(*filled);
        return filled;
    }();
    return registry;
}

RKTService::ClassesByServiceType ServiceRegistry::classesByServiceType() const {
    const std::shared_lock lock(mutex_);
    return classes_;
}

const RKTServiceClass* ServiceRegistry::classForServiceType(std::string_view serviceType) const {
    const std::shared_lock lock(mutex_);
    const auto found = classes_.find(serviceType);
    return found == classes_.end() ? nullptr : found->second;
}

void ServiceRegistry::setClass(const RKTServiceClass* serviceClass, std::string_view serviceType) {
    std::string key(serviceType);
    const std::unique_lock lock(mutex_);
    if (serviceClass) {
        classes_.insert_or_assign(std::move(key), serviceClass);
    } else {
        classes_.erase(key);
    }
}

}  // namespace rkt
