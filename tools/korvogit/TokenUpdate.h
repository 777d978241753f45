#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Asking.h"

namespace korvogit {

/// Takes the code into the record that the address has to which the browser was sent back. An
/// address without a code, or with an empty one, is an error of the domain NSURLErrorDomain; those
/// of others are what the service says, and that it does not belong to this sign-in.
std::optional<RKTError> takeCode(const RKTServiceClass& serviceClass,
                                 RKTServiceCredentials& credentials, const RKTURL& address);

/// Exchanges the record's code for a token, or refreshes it, and waits for the outcome. This thread
/// is the library's main thread meanwhile. An answer without a token is an error.
/// @param signals what to wait for besides; it is let go
/// @param spins   whether a person is waiting for text
/// @throws RKTInvalidArgumentException when the service has no sign-in with OAuth2
Answer<std::optional<RKTError>> updateToken(
    const RKTServiceClass& serviceClass, const std::string& serviceName,
    const std::shared_ptr<RKTServiceCredentials>& credentials, bool isRefresh,
    std::unique_ptr<SignalWatch> signals, bool spins);

}  // namespace korvogit
