#pragma once

#include <string>
#include <string_view>

namespace korvogit {

/// The page that the browser shows at the end of a sign-in: whether it worked, and that it may be
/// closed.
std::string loginPage(bool worked, std::string_view serviceName, std::string_view sentence);

}  // namespace korvogit
