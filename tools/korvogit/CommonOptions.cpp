#include "CommonOptions.h"

#include <KorvoGitService/RKTService.h>

namespace korvogit {

namespace {

std::string checkServiceType(const std::string& text) {
    const auto classes = RKTService::classesByServiceType();
    if (classes.contains(text)) return {};
    std::string known;
    for (const auto& [type, serviceClass] : classes) known += (known.empty() ? "" : ", ") + type;
    return "there is no service type \"" + text + "\"; the known ones are " + known;
}

}  // namespace

CLI::Option* addServiceOption(CLI::App& command, std::string& serviceType) {
    return command.add_option("--service", serviceType, "Service type, see 'korvogit services'")
        ->required()
        ->type_name("TYPE")
        ->check(checkServiceType);
}

std::string serviceName(const std::string& serviceType) {
    const RKTServiceClass* serviceClass = RKTService::classForServiceType(serviceType);
    return serviceClass->localizedNameForServiceType(serviceType).value_or(serviceType);
}

CLI::Option* addTextOption(CLI::App& command, const std::string& names,
                           std::optional<std::string>& value, const std::string& description) {
    return command.add_option_function<std::string>(
        names, [&value](const std::string& text) { value = text; }, description);
}

CLI::Option* addURLOption(CLI::App& command, const std::string& names, std::optional<RKTURL>& value,
                          const std::string& description) {
    return command
        .add_option_function<std::string>(
            names,
            [&value, names](const std::string& text) {
                value = RKTURL::URLWithString(text);
                if (value) return;
                throw CLI::ValidationError(names.substr(0, names.find(',')),
                                           "the text is not a URL: it has a blank or another "
                                           "character that is written as %XX there");
            },
            description)
        ->type_name("URL");
}

}  // namespace korvogit
