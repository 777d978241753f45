// What the tests of all adapters share.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <typeinfo>

#include "tests/helpers/Services.h"

std::optional<std::string> text(const std::optional<RKTURL>& url);

std::shared_ptr<RKTRepositoriesRequest> sortedBy(std::uint64_t key, std::uint64_t direction = 0);
std::shared_ptr<RKTRepositoriesRequest> withVisibility(const char* visibility);
std::shared_ptr<RKTRepositoriesRequest> withState(const char* state);
std::shared_ptr<RKTRepositoriesRequest> pageOf(std::optional<RKTNumber> page,
                                               std::optional<RKTNumber> countPerPage);

/// The query items of a listing's URL, found without asking: the service is ended by this. An item
/// without a value reads "(none)"; throws when a name comes twice.
std::map<std::string, std::string> listingQuery(
    const std::shared_ptr<RKTService>& service,
    const std::shared_ptr<const RKTRepositoriesRequest>& request = nullptr);

/// The results, which must be there.
RKTServiceArrayResult::Results resultsOf(const RKTServiceArrayResult& result);

/// The properties that are set, by name, as JSON: URLs as texts, numbers of their own type.
nlohmann::json propertiesOf(const RKTServiceRepository& repository);

/// Whether the service is of that very class.
template <typename Adapter>
bool isOfClass(const RKTService& service) {
    return typeid(service) == typeid(Adapter);
}

/// Services that talk to an emulator.
class AdapterTest : public testing::Test {
protected:
    AdapterTest() = default;
    explicit AdapterTest(emulator::ServerOptions options) : origin(std::move(options)) {}

    /// An account of the adapter under test.
    virtual std::shared_ptr<RKTServiceCredentials> credentials() const = 0;
    std::shared_ptr<RKTService> service() const { return serviceWith(credentials()); }

    /// What a listing makes of an answer.
    std::shared_ptr<RKTServiceArrayResult> listed(
        emulator::Answer answer,
        const std::shared_ptr<const RKTRepositoriesRequest>& request = nullptr);
    std::optional<RKTError> validated(emulator::Answer answer);
    /// The "Authorization" header that credentials of that type are sent with.
    std::optional<std::string> authorization(const char* credentialType,
                                             const std::optional<std::string>& user,
                                             const std::optional<std::string>& token);
    emulator::Request lastRequest() const { return origin.server.requests().back(); }

    SharedOrigin origin;
};
