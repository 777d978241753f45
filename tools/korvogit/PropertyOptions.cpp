#include "PropertyOptions.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace korvogit {

namespace {

RepositoryField fieldNamed(const char* option, std::string_view name) {
    const auto fields = repositoryFields();
    const auto field = std::ranges::find(fields, name, &RepositoryField::name);
    if (field != fields.end()) return *field;
    std::string known;
    for (const auto& each : fields) known += (known.empty() ? "" : ", ") + std::string(each.name);
    throw CLI::ValidationError(
        option, "there is no property \"" + std::string(name) + "\"; the properties are " + known);
}

std::vector<RepositoryField> fieldsNamed(const char* option, std::string_view names) {
    std::vector<RepositoryField> fields;
    while (true) {
        const auto comma = names.find(',');
        fields.push_back(fieldNamed(option, names.substr(0, comma)));
        if (comma == std::string_view::npos) return fields;
        names.remove_prefix(comma + 1);
    }
}

}  // namespace

PropertyOptions::PropertyOptions(CLI::App& command) {
    command
        .add_option_function<std::string>(
            "--columns",
            [this](const std::string& names) { columns_ = fieldsNamed("--columns", names); },
            "Properties to print in a table or as CSV, such as\n"
            "fullName,visibility,webURL")
        ->type_name("PROPERTY,...");
    command
        .add_option_function<std::string>(
            "--sort-by",
            [this](const std::string& name) { sortBy_ = fieldNamed("--sort-by", name); },
            "Sort what was listed by a property that the service\n"
            "cannot sort by, such as numberOfStars")
        ->type_name("PROPERTY");
}

}  // namespace korvogit
