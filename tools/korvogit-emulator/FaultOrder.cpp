#include "FaultOrder.h"

#include <algorithm>
#include <map>
#include <utility>

#include "Configuration.h"

namespace emulator {

namespace {

using Disturbance = std::pair<ConnectionStage, RawAnswer>;

const std::map<std::string, Disturbance>& disturbances() {
    static const std::map<std::string, Disturbance> byName{
        {"accept-reset", {ConnectionStage::Accepted, RawAnswer().reset()}},
        {"accept-silence", {ConnectionStage::Accepted, RawAnswer().silence()}},
        {"tls-reset", {ConnectionStage::ClientHello, RawAnswer().reset()}},
        {"tls-silence", {ConnectionStage::ClientHello, RawAnswer().silence()}},
        {"tls-garbage", {ConnectionStage::ClientHello, RawAnswer().send("no TLS here\r\n")}},
    };
    return byName;
}

}  // namespace

FaultOrder FaultOrder::parse(std::string text) {
    FaultOrder order;
    // A path may end in "*" itself, so only digits at the end are times.
    const auto star = text.rfind('*');
    if (star != std::string::npos && star + 1 < text.size() && text.size() - star < 10 &&
        text.find_first_not_of("0123456789", star + 1) == std::string::npos) {
        order.times = std::stoul(text.substr(star + 1));
        text.erase(star);
    }
    const auto at = text.find('@');
    order.name = text.substr(0, at);
    order.path = at == std::string::npos ? "" : text.substr(at + 1);
    requireKnown(order.name);
    return order;
}

void FaultOrder::requireKnown(const std::string& name) {
    if (!disturbances().contains(name) && !faults::named(name)) {
        throw ConfigurationError("there is no fault \"" + name + "\"; --list-faults names them");
    }
}

std::vector<std::string> FaultOrder::names() {
    std::vector<std::string> all;
    for (const auto& [name, steps] : disturbances()) {
        all.push_back(name);
    }
    all.insert(all.end(), faults::names().begin(), faults::names().end());
    return all;
}

void FaultOrder::giveTo(Server& server) const {
    const auto found = disturbances().find(name);
    if (found != disturbances().end()) {
        server.disturb(found->second.first, found->second.second, times);
    } else {
        server.fault({.path = path}, faults::named(name).value(), times);
    }
}

}  // namespace emulator
