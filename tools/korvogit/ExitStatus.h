#pragma once

namespace korvogit {

/// What the program ends with. A signal gives 128 and its number, as in a shell: 130 after Ctrl-C.
enum ExitStatus : int {
    ExitSuccess = 0,
    ExitFailure = 1,     ///< the service or the network failed, or the output could not be written
    ExitWrongUsage = 2,  ///< the command line, the token or a file that it names is wrong
};

constexpr int exitStatusOfSignal(int signal) {
    return 128 + signal;
}

}  // namespace korvogit
