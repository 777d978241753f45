#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "FaultOrder.h"
#include "Server.h"

namespace emulator {

/// A mistake of whoever configures the emulator; what() says which and where.
class ConfigurationError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the program is told by its options and by its configuration file.
struct Configuration {
    ServerOptions server{};
    std::vector<FaultOrder> faults{};
};

/// "rate-limited" and so on; "none" for none.
std::string_view restrictionName(Restriction restriction);

/// Reads "LOGIN[:REPOSITORIES[:RESTRICTION]]". Throws ConfigurationError.
Account parseAccount(const std::string& text);

/// Makes these the only accounts; the first one's tokens "fault-NAME" bring on faults, as octavia's
/// do among the usual accounts. Throws ConfigurationError when two have one login.
void useAccounts(std::vector<Account> accounts, Configuration& configuration);

/// Reads the JSON text of a configuration file; what it does not mention stays as it was. Throws
/// ConfigurationError for everything that is not described in korvogit-emulator(1), so that a
/// misspelt member is not passed over.
void readConfiguration(std::string_view text, Configuration& configuration);

}  // namespace emulator
