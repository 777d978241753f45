// The library's main queue in a loop of one's own.

#include <poll.h>

#include <optional>

#include "SignIn.h"

int main(int argumentCount, char** arguments) {
    const SignIn signIn(argumentCount, arguments);
    std::optional<int> status;
    signIn.start([&](int exitStatus) { status = exitStatus; });

    // The descriptor is readable as long as tasks wait. A loop that waits for other things, too,
    // has them in the same call.
    pollfd waited[] = {{RKTMainQueue::fileDescriptor(), POLLIN, 0}};
    while (!status) {
        poll(waited, 1, -1);
        RKTMainQueue::drain();
    }
    return *status;
}
