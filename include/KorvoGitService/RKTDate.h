// Points in time.

#ifndef KORVOGITSERVICE_RKTDATE_H
#define KORVOGITSERVICE_RKTDATE_H

#include <chrono>

/// UTC with microseconds. The system clock's own nanoseconds end in the year 2262, before
/// RKTDateDistantFuture().
using RKTDate = std::chrono::sys_time<std::chrono::microseconds>;

/// 1 January 4001, 00:00 UTC: the expiry of a token that does not expire.
constexpr RKTDate RKTDateDistantFuture() {
    return RKTDate(std::chrono::seconds(64'092'211'200));
}

#endif
