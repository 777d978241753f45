#include "Configuration.h"

#include <limits>
#include <utility>

#include "ConfigurationReader.h"

namespace emulator {

namespace {

constexpr std::int64_t highestPort = 65535;

nlohmann::json parse(std::string_view text) {
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& error) {
        throw ConfigurationError("this is no JSON: byte " + std::to_string(error.byte));
    }
}

OAuthApplication readApplication(const JSONReader& given) {
    OAuthApplication application;
    application.clientId = given.text("clientId");
    application.clientSecret = given.text("clientSecret");
    application.name = given.optionalText("name").value_or(application.clientId);
    application.callbacks = given.texts("callbacks", std::move(application.callbacks));
    if (application.callbacks.empty()) {
        given.at("callbacks", [] { throw ConfigurationError("at least one is needed"); });
    }
    application.expiringTokens = given.flag("expiringTokens", application.expiringTokens);
    given.requireNoOthers();
    return application;
}

FaultOrder readFault(const JSONReader& given) {
    FaultOrder order;
    order.name = given.text("name");
    given.at("name", [&] { FaultOrder::requireKnown(order.name); });
    order.path = given.optionalText("path").value_or("");
    if (given.has("times")) {
        order.times = static_cast<std::size_t>(
            given.number("times", 1, std::numeric_limits<std::int32_t>::max(), 1));
    }
    given.requireNoOthers();
    return order;
}

void readServer(const JSONReader& top, ServerOptions& server) {
    server.httpPort =
        static_cast<std::uint16_t>(top.number("httpPort", server.httpPort, highestPort));
    server.httpsPort =
        static_cast<std::uint16_t>(top.number("httpsPort", server.httpsPort, highestPort));
    server.extraNames = top.texts("names", std::move(server.extraNames));
    server.rateLimit =
        top.number("rateLimit", server.rateLimit, std::numeric_limits<std::int32_t>::max(), 1);
    server.strict = top.flag("strict", server.strict);
    server.listsAcrossWorkspaces = top.flag("crossWorkspace", server.listsAcrossWorkspaces);
}

}  // namespace

void readConfiguration(std::string_view text, Configuration& configuration) {
    const auto json = parse(text);
    const JSONReader top(json, "");
    readServer(top, configuration.server);
    if (top.has("accounts")) {
        std::vector<Account> accounts;
        for (const auto& element : top.elements("accounts")) {
            accounts.push_back(readAccount(element));
        }
        top.at("accounts", [&] { useAccounts(std::move(accounts), configuration); });
    }
    if (top.has("applications")) configuration.server.applications.clear();
    for (const auto& element : top.elements("applications")) {
        configuration.server.applications.push_back(readApplication(element));
    }
    for (const auto& element : top.elements("faults")) {
        configuration.faults.push_back(readFault(element));
    }
    top.requireNoOthers();
}

}  // namespace emulator
