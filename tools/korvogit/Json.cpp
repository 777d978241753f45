#include "Json.h"

#include "DisplayText.h"
#include "RepositoryFields.h"

namespace korvogit {

Json toJson(const RKTNumber& number) {
    switch (number.type()) {
        case RKTNumber::Type::Boolean:
            return number.boolValue();
        case RKTNumber::Type::Signed:
            return number.integerValue();
        case RKTNumber::Type::Unsigned:
            return number.unsignedIntegerValue();
        case RKTNumber::Type::Floating:
            break;
    }
    return number.doubleValue();
}

Json toJson(RKTDate date) {
    using namespace std::chrono;
    const auto sinceEpoch = date.time_since_epoch();
    // Towards zero: the earliest date's second that is rounded down is none that a date can be.
    if (sinceEpoch % 1s == 0s) return duration_cast<seconds>(sinceEpoch).count();
    return duration<double>(sinceEpoch).count();
}

Json toJson(const RKTServiceCredentials& credentials) {
    return {
        {"serviceType", toJson(credentials.serviceType())},
        {"credentialType", toJson(credentials.credentialType())},
        {"URL", toJson(credentials.URL())},
        {"user", toJson(credentials.user())},
        {"token", toJson(credentials.token())},
        {"refreshToken", toJson(credentials.refreshToken())},
        {"expiryDate", toJson(credentials.expiryDate())},
        {"OAuthClientID", toJson(credentials.OAuthClientID())},
        {"OAuthClientSecret", toJson(credentials.OAuthClientSecret())},
        {"OAuthCode", toJson(credentials.OAuthCode())},
        {"OAuthScopes", toJson(credentials.OAuthScopes())},
        {"OAuthState", toJson(credentials.OAuthState())},
        {"OAuthRedirectURL", toJson(credentials.OAuthRedirectURL())},
    };
}

Json toJson(const RKTError& error) {
    return {
        {"domain", error.domain()},
        {"code", error.code()},
        {"localizedDescription", error.localizedDescription()},
        {"localizedRecoverySuggestion", toJson(error.localizedRecoverySuggestion())},
        {"URL", toJson(error.URL())},
    };
}

Json toJson(const RKTServiceRepository& repository) {
    Json json = Json::object();
    for (const RepositoryField& field : repositoryFields()) {
        Json& member = json[std::string(field.name)];
        const FieldValue value = field.value(repository);
        if (const auto* text = std::get_if<std::string>(&value)) member = *text;
        if (const auto* number = std::get_if<RKTNumber>(&value)) member = toJson(*number);
    }
    return json;
}

Json toJson(const RKTServiceResult::LinkRelations& relations) {
    Json json = Json::object();
    for (const auto& [name, url] : relations) json[name] = toJson(url);
    return json;
}

Json toJson(const RKTServiceArrayResult::Results& results) {
    Json json = Json::array();
    for (const auto& repository : results) json.push_back(toJson(*repository));
    return json;
}

std::string jsonText(const Json& json) {
    return displayJSON(json.dump(2, ' ', false, Json::error_handler_t::replace)) + "\n";
}

std::string jsonLine(const Json& json) {
    return displayJSON(json.dump(-1, ' ', false, Json::error_handler_t::replace)) + "\n";
}

}  // namespace korvogit
