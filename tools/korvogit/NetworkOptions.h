#pragma once

#include <KorvoGitService/RKTNetworkSettings.h>

#include <CLI/CLI.hpp>

namespace korvogit {

/// How to reach the network: the options that all subcommands that use it share.
class NetworkOptions {
public:
    explicit NetworkOptions(CLI::App& command);
    NetworkOptions(const NetworkOptions&) = delete;
    NetworkOptions& operator=(const NetworkOptions&) = delete;

    /// Makes them the process's. Before the first service is made.
    void apply() const { RKTNetworkSettings::setShared(settings_); }

private:
    RKTNetworkSettings settings_ = RKTNetworkSettings::shared();
};

}  // namespace korvogit
