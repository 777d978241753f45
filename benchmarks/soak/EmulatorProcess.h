// The emulator in a process of its own, so that its memory is not counted.

#pragma once

#include <KorvoGitService/RKTNetworkSettings.h>
#include <sys/types.h>

#include <cstdint>
#include <string>

namespace soak {

/// Ends with this object.
class EmulatorProcess {
public:
    /// Starts this very program again.
    /// @throws std::runtime_error
    explicit EmulatorProcess(std::uint64_t seed);
    ~EmulatorProcess();
    EmulatorProcess(const EmulatorProcess&) = delete;
    EmulatorProcess& operator=(const EmulatorProcess&) = delete;

    /// Settings with which the public services are this emulator.
    const RKTNetworkSettings& settings() const { return settings_; }
    /// The address of a self-hosted service.
    const std::string& url() const { return url_; }
    /// Spoils about every third answer from now on, or none any more. Calm at first.
    void storm() const { tell("storm\n"); }
    void calm() const { tell("calm\n"); }
    /// Closes the connections on which nothing is under way.
    void closeIdleConnections() const { tell("close\n"); }
    /// Disturbs some of the connections that open next, before HTTP.
    void disturbConnections() const { tell("disturb\n"); }

private:
    void tell(const std::string& command) const;
    std::string readLine() const;

    pid_t process_ = -1;
    int toProcess_ = -1;
    int fromProcess_ = -1;
    RKTNetworkSettings settings_;
    std::string url_;
};

/// What the other process does: serves until its standard input ends.
int runEmulator(std::uint64_t seed);

}  // namespace soak
