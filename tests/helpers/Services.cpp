#include "tests/helpers/Services.h"

#include <stdexcept>
#include <utility>

namespace {

/// What the one call of a handler brought. The queue is serial, so a second call, had the task's
/// end caused one, would come before what is added to the queue now.
template <class Value>
Value theOnlyCall(RKTService& service, const Awaited<Value>& calls) {
    Value value = calls.first();
    drain(*service.URLSession()->delegateQueue());
    if (calls.count() != 1) throw std::runtime_error("the handler ran more than once");
    return value;
}

std::optional<std::string> requestedURL(const RKTURLSessionDataTask& task) {
    const auto& url = task.originalRequest().URL();
    return url ? std::optional(url->absoluteString()) : std::nullopt;
}

}  // namespace

SharedOrigin::SharedOrigin() : SharedOrigin(emulator::ServerOptions()) {}

SharedOrigin::SharedOrigin(emulator::ServerOptions options)
    : Origin(std::move(options)), former_(RKTNetworkSettings::shared()) {
    RKTNetworkSettings::setShared(settings);
}

SharedOrigin::~SharedOrigin() {
    RKTNetworkSettings::setShared(former_);
}

std::string SharedOrigin::authority() const {
    return "localhost:" + std::to_string(server.httpsPort());
}

std::shared_ptr<RKTServiceCredentials> credentialsFor(const std::string& serviceType,
                                                      const std::optional<std::string>& url,
                                                      const std::optional<std::string>& user,
                                                      const std::optional<std::string>& token) {
    auto credentials =
        std::make_shared<RKTServiceCredentials>(serviceType, RKTServiceCredentialTypeToken);
    if (url) credentials->setURL(RKTURL::URLWithString(*url));
    credentials->setUser(user);
    credentials->setToken(token);
    return credentials;
}

std::shared_ptr<RKTService> endedWithItsLastUse(std::shared_ptr<RKTService> service) {
    RKTService* const object = service.get();
    return std::shared_ptr<RKTService>(
        object, [held = std::move(service)](RKTService*) { held->invalidateAndCancel(); });
}

std::shared_ptr<RKTService> serviceWith(
    const std::shared_ptr<const RKTServiceCredentials>& credentials) {
    auto service = RKTService::serviceWithCredentials(credentials);
    if (!service) throw std::runtime_error("no service of that type");
    return endedWithItsLastUse(std::move(service));
}

std::optional<RKTError> validate(RKTService& service) {
    const auto calls = std::make_shared<Awaited<std::optional<RKTError>>>();
    service.validateCredentialsWithCompletionHandler(
        [calls](auto error) { calls->put(std::move(error)); });
    return theOnlyCall(service, *calls);
}

std::shared_ptr<RKTServiceArrayResult> list(RKTService& service,
                                            std::shared_ptr<const RKTRepositoriesRequest> request) {
    const auto calls = std::make_shared<Awaited<std::shared_ptr<RKTServiceArrayResult>>>();
    service.fetchRepositoriesWithRequest(std::move(request),
                                         [calls](auto result) { calls->put(std::move(result)); });
    return theOnlyCall(service, *calls);
}

std::optional<std::string> validationURL(RKTService& service) {
    service.invalidateAndCancel();
    return requestedURL(*service.validateCredentialsWithCompletionHandler(nullptr));
}

std::optional<std::string> listingURL(RKTService& service,
                                      std::shared_ptr<const RKTRepositoriesRequest> request) {
    service.invalidateAndCancel();
    return requestedURL(*service.fetchRepositoriesWithRequest(std::move(request), nullptr));
}
