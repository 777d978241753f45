// Signing in with the program against the emulator.

#pragma once

#include "Korvogit.h"
#include "tests/helpers/OpenedAddress.h"
#include "tests/tools/emulator/Client.h"

/// Tests of the program's sign-in, without a real browser.
class KorvogitSignIn : public KorvogitTest {
protected:
    /// The hosts of the sign-in and of the API lead to the emulator.
    Arguments hosts() const {
        return network() + Arguments{"--connect-to", "github.com:443:127.0.0.1:" +
                                                         std::to_string(server.httpsPort())};
    }

    static Arguments application(const std::string& client = "demo-client") {
        return {"--service", "GitHub", "--client-id", client};
    }

    static Launch withSecret(Arguments arguments, const std::string& secret = "demo-secret") {
        Launch launch = commandLine(std::move(arguments));
        launch.environment["KORVOGIT_CLIENT_SECRET"] = secret;
        return launch;
    }

    /// Presses the button on the service's page; where the browser is sent back to.
    std::string decide(const std::string& authorizeURL, const std::string& decision) const {
        const auto target = authorizeURL.substr(std::string("https://github.com").size());
        const std::string form = "login=octavia&decision=" + decision;
        emulator_test::Client client(server.httpsPort(), {server.caFile(), "github.com"});
        client.send("POST " + target + " HTTP/1.1\r\nHost: github.com\r\nContent-Length: " +
                    std::to_string(form.size()) + "\r\n\r\n" + form);
        return client.receive().header("Location").value_or("");
    }

    /// The query's value of that name in an address, decoded.
    static std::string valueIn(const std::string& address, const std::string& name) {
        for (const auto& item : emulator::parseQuery(address.substr(address.find('?') + 1))) {
            if (item.name == name) return item.value;
        }
        return "";
    }
};
