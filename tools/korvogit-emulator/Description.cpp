#include "Description.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "Configuration.h"

namespace emulator {

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const std::filesystem::path& file) {
    std::ifstream input(file);
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

Json describe(const Account& account) {
    return {{"login", account.login},
            {"token", account.tokens.front().value},
            {"password", account.password},
            {"repositories", account.repositories.size()},
            {"restriction", restrictionName(account.restriction)}};
}

Json describe(const OAuthApplication& application) {
    return {{"name", application.name},
            {"clientId", application.clientId},
            {"clientSecret", application.clientSecret},
            {"callbacks", application.callbacks},
            {"expiringTokens", application.expiringTokens}};
}

template <typename Things>
Json list(const Things& things) {
    auto result = Json::array();
    for (const auto& thing : things) {
        result.push_back(describe(thing));
    }
    return result;
}

}  // namespace

void describeAsJSON(const Server& server, std::ostream& output) {
    const Json description{{"http", server.httpURL()},
                           {"https", server.httpsURL()},
                           {"httpPort", server.httpPort()},
                           {"httpsPort", server.httpsPort()},
                           {"hosts", CertificateAuthority::publicHosts()},
                           {"caFile", server.caFile().string()},
                           {"ca", textOf(server.caFile())},
                           {"accounts", list(server.accounts().all())},
                           {"applications", list(server.applications())}};
    output << description.dump() << '\n' << std::flush;
}

void describeForPeople(const Server& server, std::ostream& output) {
    output << "HTTP    " << server.httpURL() << "\nHTTPS   " << server.httpsURL() << "\nCA      "
           << server.caFile().string() << "\n\nAccounts (login, token):\n";
    std::size_t width = 10;
    for (const auto& account : server.accounts().all()) {
        width = std::max(width, account.login.size());
    }
    for (const auto& account : server.accounts().all()) {
        output << "  " << std::left << std::setw(static_cast<int>(width)) << account.login << "  "
               << account.tokens.front().value << "  " << account.repositories.size()
               << " repositories";
        if (account.restriction != Restriction::None) {
            output << ", " << restrictionName(account.restriction);
        }
        output << '\n';
    }
    output << "\nApplications for signing in (client ID, secret):\n";
    for (const auto& application : server.applications()) {
        output << "  " << application.clientId << "  " << application.clientSecret
               << (application.expiringTokens ? "  tokens end after eight hours" : "") << '\n';
    }
    output << std::flush;
}

}  // namespace emulator
