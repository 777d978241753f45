// Which adapter serves which service type.

#ifndef KORVOGITSERVICE_SERVICE_SERVICEREGISTRY_H
#define KORVOGITSERVICE_SERVICE_SERVICEREGISTRY_H

#include <shared_mutex>
#include <string_view>

#include "KorvoGitService/RKTService.h"

namespace rkt {

/// The process's one registry. Safe from any thread; no other lock is taken while its own is held.
class ServiceRegistry {
public:
    /// Holds the built-in adapters from its first use on, whoever that is, and is never destroyed:
    /// a thread may still look a service up while the process ends.
    static ServiceRegistry& shared();

    RKTService::ClassesByServiceType classesByServiceType() const;
    /// Null for an unknown type.
    const RKTServiceClass* classForServiceType(std::string_view serviceType) const;
    /// Replaces an earlier class of that type; null removes it.
    void setClass(const RKTServiceClass* serviceClass, std::string_view serviceType);

private:
    ServiceRegistry() = default;

    mutable std::shared_mutex mutex_;
    RKTService::ClassesByServiceType classes_;
};

/// Fills a new registry. Defined where the adapters are, and called from here rather than by
/// objects of static storage duration there: a linker leaves those out of a program that names none
/// of the adapters, and with them their registration.
void registerBuiltInAdapters(ServiceRegistry& registry);

}  // namespace rkt

#endif
