#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Message.h"

namespace emulator {

/// What a person is asked in a browser. The form goes back to the page's own address by POST, with
/// "login" and "decision", which is "allow" or "deny".
struct SignInPage {
    std::string service{};      ///< the hosting service's name
    std::string application{};  ///< who wants in
    std::vector<std::string> scopes{};
    std::vector<std::string> logins{};
    std::string suggestedLogin{};  ///< the one that is chosen at first, if it is among them

    Answer answer() const;
};

/// A page that says why there is no sign-in.
Answer signInProblem(unsigned status, std::string_view service, std::string_view sentence);

}  // namespace emulator
