#include <KorvoGitService/RKTService.h>

#include <unistd.h>

#include <memory>
#include <string>

#include "Command.h"
#include "ExitStatus.h"
#include "Format.h"
#include "Joined.h"
#include "Json.h"
#include "StandardStreams.h"
#include "Table.h"

namespace korvogit {

namespace {

std::string servicesTable() {
    Table table({{"TYPE"}, {"NAME"}, {"ADDRESS"}, {"CREDENTIALS"}, {"ABOUT TOKENS"}});
    for (const auto& [type, serviceClass] : RKTService::classesByServiceType()) {
        const auto url = serviceClass->defaultURLForServiceType(type);
        const auto help = serviceClass->personalAccessTokenHelpURLForServiceType(type);
        const bool custom = serviceClass->requiresCustomURLForServiceType(type);
        table.addRow({{type},
                      {serviceClass->localizedNameForServiceType(type).value_or("")},
                      {url ? url->absoluteString() : std::string(custom ? "yours (--url)" : "")},
                      {joined(serviceClass->supportedCredentialTypesForServiceType(type))},
                      {help ? help->absoluteString() : ""}});
    }
    return table.text(Terminal::of(STDOUT_FILENO));
}

Json servicesJSON() {
    Json json = Json::object();
    for (const auto& [type, serviceClass] : RKTService::classesByServiceType()) {
        json[type] = {
            {"localizedName", toJson(serviceClass->localizedNameForServiceType(type))},
            {"defaultURL", toJson(serviceClass->defaultURLForServiceType(type))},
            {"requiresCustomURL", serviceClass->requiresCustomURLForServiceType(type)},
            {"supportedCredentialTypes",
             serviceClass->supportedCredentialTypesForServiceType(type)},
            {"personalAccessTokenHelpURL",
             toJson(serviceClass->personalAccessTokenHelpURLForServiceType(type))},
        };
    }
    return json;
}

}  // namespace

void addServicesCommand(CLI::App& program, Action& chosen) {
    CLI::App& command =
        *program.add_subcommand("services", "List the service types and what each needs");
    const auto format = std::make_shared<Format>();
    addFormatOption(command, *format, {Format::Table, Format::Json});
    command.footer(
        "Example:\n"
        "  korvogit services --format json");
    command.callback([&chosen, format] {
        chosen = [format] {
            writeOutput(*format == Format::Json ? jsonText(servicesJSON()) : servicesTable());
            return ExitSuccess;
        };
    });
}

}  // namespace korvogit
