#include "SignInOutput.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <vector>

#include "DisplayText.h"
#include "Joined.h"

namespace korvogit {

namespace {

std::string line(const std::string& name, const std::string& value) {
    constexpr std::size_t width = 15;
    return name + std::string(width - name.size(), ' ') +
           (value.empty() ? "-" : displayText(value)) + "\n";
}

// Between them a date is written with four digits for its year.
constexpr std::chrono::sys_days yearZero = std::chrono::year(0) / 1 / 1;
constexpr std::chrono::sys_days yearTenThousand = std::chrono::year(10'000) / 1 / 1;

std::string expiryText(const std::optional<RKTDate>& expiryDate) {
    if (!expiryDate) return {};
    if (*expiryDate >= RKTDateDistantFuture()) return "never";
    // Towards zero, which unlike rounding down stays in the range of dates.
    const std::chrono::sys_seconds second(
        std::chrono::duration_cast<std::chrono::seconds>(expiryDate->time_since_epoch()));
    if (second < yearZero || second >= yearTenThousand) {
        return std::to_string(second.time_since_epoch().count()) + " seconds after 1970";
    }
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(second - day);
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d UTC",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

}  // namespace

Json signInJSON(const std::optional<RKTError>& error, const RKTServiceCredentials& credentials) {
    return Json::object({{"ok", !error.has_value()},
                         {"error", toJson(error)},
                         {"credentials", toJson(credentials)}});
}

std::string tokenSummary(const RKTServiceCredentials& credentials) {
    return line("Token", credentials.token().value_or("")) +
           line("Refresh token", credentials.refreshToken().value_or("")) +
           line("Expires", expiryText(credentials.expiryDate()));
}

std::string accountSummary(const RKTServiceCredentials& credentials,
                           const std::string& serviceName) {
    const auto url = credentials.URL();
    return line("Service", serviceName) + line("Address", url ? url->absoluteString() : "") +
           line("User", credentials.user().value_or("")) +
           line("Scopes", joined(credentials.OAuthScopes().value_or(std::vector<std::string>()))) +
           line("Expires", expiryText(credentials.expiryDate()));
}

}  // namespace korvogit
