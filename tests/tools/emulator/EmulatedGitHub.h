#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Client.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace emulator_test {

inline constexpr auto agent = "User-Agent: test\r\n";

inline std::string basic(const std::string& user, const std::string& token) {
    return "Authorization: Basic " + emulator::base64(user + ":" + token) + "\r\n";
}

inline std::vector<std::string> namesOf(const Response& response) {
    std::vector<std::string> names;
    for (const auto& repository : nlohmann::json::parse(response.body)) {
        names.push_back(repository.at("full_name"));
    }
    return names;
}

template <typename T>
std::vector<T> valuesOf(const Response& response, const char* member) {
    std::vector<T> values;
    for (const auto& repository : nlohmann::json::parse(response.body)) {
        values.push_back(repository.at(member).template get<T>());
    }
    return values;
}

class EmulatedGitHub : public testing::Test {
protected:
    explicit EmulatedGitHub(emulator::ServerOptions options = {})
        : server(std::move(options)),
          client(server.httpsPort(), Tls{server.caFile(), "api.github.com"}) {}

    Response ask(const std::string& target, const std::string& headers) {
        client.send(get(target, headers, "api.github.com"));
        return client.receive();
    }
    Response askAs(const std::string& login, const std::string& target,
                   const std::string& headers = {}) {
        return ask(target, agent + basic(login, "demo-token-" + login) + headers);
    }
    Response askEnterprise(const std::string& target) {
        const auto headers = agent + basic("octavia", "demo-token-octavia");
        client.send(get(target, headers, "ghe.example.com:8443"));
        return client.receive();
    }

    emulator::Server server;
    Client client;
};

}  // namespace emulator_test
