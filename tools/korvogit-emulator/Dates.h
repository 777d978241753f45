#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace emulator {

/// Seconds since 1970 as "2024-02-29T12:00:00Z".
inline std::string isoDate(std::int64_t seconds) {
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

/// Seconds since 1970 as HTTP writes dates (RFC 9110, 5.6.7), in any locale.
inline std::string httpDate(std::int64_t seconds) {
    static constexpr const char* dayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* monthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto day = std::chrono::floor<std::chrono::days>(
        std::chrono::sys_seconds(std::chrono::seconds(seconds)));
    const std::chrono::year_month_day date(day);
    const std::string clock = isoDate(seconds).substr(11, 8);
    char text[48];
    std::snprintf(text, sizeof text, "%s, %02u %s %04d %s GMT",
                  dayNames[std::chrono::weekday(day).c_encoding()],
                  static_cast<unsigned>(date.day()),
                  monthNames[static_cast<unsigned>(date.month()) - 1],
                  static_cast<int>(date.year()), clock.c_str());
    return text;
}

/// Seconds since 1970 as "2024-02-29 12:00:00 UTC", as GitHub tells when a token ends.
inline std::string spacedDate(std::int64_t seconds) {
    const auto iso = isoDate(seconds);
    return iso.substr(0, 10) + " " + iso.substr(11, 8) + " UTC";
}

/// Now, in seconds since 1970.
inline std::int64_t systemSeconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace emulator
