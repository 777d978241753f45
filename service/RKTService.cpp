#include "KorvoGitService/RKTService.h"

#include <utility>

#include "core/Misuse.h"
#include "service/ServiceRegistry.h"

RKTService::ClassesByServiceType RKTService::classesByServiceType() {
    return rkt::ServiceRegistry::shared().classesByServiceType();
}

const RKTServiceClass* RKTService::classForServiceType(std::string_view serviceType) {
    return rkt::ServiceRegistry::shared().classForServiceType(serviceType);
}

void RKTService::setClass(const RKTServiceClass* serviceClass, std::string_view forServiceType) {
    rkt::ServiceRegistry::shared().setClass(serviceClass, forServiceType);
}

std::shared_ptr<RKTService> RKTService::serviceWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) {
    const auto serviceType = credentials ? credentials->serviceType() : std::nullopt;
    const auto* serviceClass = serviceType ? classForServiceType(*serviceType) : nullptr;
    return serviceClass ? serviceClass->initWithCredentials(credentials) : nullptr;
}

const RKTServiceClass* RKTService::serviceClass() {
    static const RKTServiceClass* const object = new RKTServiceClass;
    return object;
}

RKTService::RKTService() {
    rkt::raiseMustBeInitializedUsing("initWithCredentials:");
}

RKTService::~RKTService() = default;

void RKTService::initializeWithCredentials(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) {
    setCredentials(credentials);
    setURLSession(RKTURLSession::sessionWithConfiguration(
        RKTURLSessionConfiguration::ephemeralSessionConfiguration(), shared_from_this()));
}

std::shared_ptr<RKTURLSession> RKTService::URLSession() const {
    const std::lock_guard lock(mutex_);
    return URLSession_;
}

// In both setters, what is replaced is destroyed after the lock was released.
void RKTService::setURLSession(std::shared_ptr<RKTURLSession> session) {
    const std::lock_guard lock(mutex_);
    URLSession_.swap(session);
}

std::shared_ptr<RKTServiceCredentials> RKTService::credentials() const {
    const std::lock_guard lock(mutex_);
    return credentials_;
}

void RKTService::setCredentials(const std::shared_ptr<const RKTServiceCredentials>& credentials) {
    auto copy = credentials ? credentials->copyWithZone() : nullptr;
    const std::lock_guard lock(mutex_);
    credentials_.swap(copy);
}

void RKTService::finishTasksAndInvalidate() {
    if (const auto session = URLSession()) session->finishTasksAndInvalidate();
}

void RKTService::invalidateAndCancel() {
    if (const auto session = URLSession()) session->invalidateAndCancel();
}

// NOLINTBEGIN(performance-unnecessary-value-param): the overrides keep what they are given
std::shared_ptr<RKTURLSessionDataTask> RKTService::validateCredentialsWithCompletionHandler(
    ValidationHandler) {
    rkt::raiseMustBeOverridden("validateCredentialsWithCompletionHandler:");
}

std::shared_ptr<RKTURLSessionDataTask> RKTService::fetchRepositoriesWithRequest(
    std::shared_ptr<const RKTRepositoriesRequest>, RepositoriesHandler) {
    rkt::raiseMustBeOverridden("fetchRepositoriesWithRequest:completionHandler:");
}
// NOLINTEND(performance-unnecessary-value-param)
