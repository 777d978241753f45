#include <memory>

#include "Asking.h"
#include "Command.h"
#include "ErrorReport.h"
#include "ExitStatus.h"
#include "Format.h"
#include "Json.h"
#include "StandardStreams.h"

namespace korvogit {

namespace {

struct ValidateOptions {
    explicit ValidateOptions(CLI::App& command) : account(command), network(command) {
        addFormatOption(command, format, {Format::Table, Format::Json});
    }

    AccountOptions account;
    NetworkOptions network;
    Format format;
};

int run(const ValidateOptions& options) {
    const bool forPeople = options.format == Format::Table;
    const auto [error, signal] = ask<std::optional<RKTError>>(
        options.account, options.network, forPeople, [](RKTService& service, const auto& handler) {
            return service.validateCredentialsWithCompletionHandler(handler);
        });
    if (!forPeople) {
        writeOutput(jsonText(Json::object({{"error", toJson(error)}})));
    } else if (error) {
        report(*error, options.account.serviceName());
    } else {
        writeOutput(options.account.serviceName() + " accepts the credentials.\n");
    }
    return exitStatus(error, signal);
}

}  // namespace

void addValidateCommand(CLI::App& program, Action& chosen) {
    CLI::App& command =
        *program.add_subcommand("validate", "Ask a service whether it accepts the credentials");
    const auto options = std::make_shared<ValidateOptions>(command);
    command.footer(
        "Examples:\n"
        "  KORVOGIT_TOKEN=... korvogit validate --service GitHub --user octocat\n"
        "  pass show work/token | korvogit validate --service GitHubEnterprise \\\n"
        "      --url https://git.example.com --user me --token-stdin");
    command.callback([&chosen, options] { chosen = [options] { return run(*options); }; });
}

}  // namespace korvogit
