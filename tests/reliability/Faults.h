// What can go wrong between a client and a hosting service, and what an application is told then.

#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/helpers/Gateway.h"
#include "tests/helpers/Services.h"

/// An emulator that answers well, and what may stand between it and its clients.
struct Scene : SharedOrigin {
    /// Names that mean this machine once all is well.
    static constexpr const char* unknownHost = "unknown.test";
    static constexpr const char* silentHost = "silent.test";

    Gateway gateway;
    emulator::ForwardProxy proxy;

    Scene();

    /// Silence then takes no time.
    void loseHeartSoon();
    /// Requests to all hosts are made to that port of that host.
    void connectTo(const std::string& host, std::uint16_t port);
    /// Requests to all hosts go through a proxy at that port.
    void goThroughProxy(std::uint16_t port, const std::string& scheme = "http");
    /// Makes everything well, for who takes the same way again.
    void mend();

private:
    void share() const;
};

/// A row of the table of faults in docs/reliability.md.
struct FaultRow {
    std::string fault;
    std::function<void(Scene& scene)> bring;
    /// "success", or domain and code of the error.
    std::string outcome;
    std::string outcomeOfTokenExchange;

    friend void PrintTo(const FaultRow& row, std::ostream* stream) { *stream << row.fault; }
};

/// In the order of the page.
const std::vector<FaultRow>& faultRows();
