// What HTTP statuses mean, in words.

#ifndef KORVOGITSERVICE_SUPPORT_STATUSTEXTS_H
#define KORVOGITSERVICE_SUPPORT_STATUSTEXTS_H

#include <string_view>

namespace rkt {

/// The text of the IANA HTTP Status Code Registry in lower case, which is also its key in the
/// strings table; for a number without one the text of its class.
std::string_view statusText(int statusCode);

}  // namespace rkt

#endif
