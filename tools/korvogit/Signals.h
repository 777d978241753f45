#pragma once

#include <csignal>

namespace korvogit {

/// From now on SIGINT and SIGTERM end the program at once with the status that belongs to them, and
/// writing to a pipe that nobody reads is an error of write(2) instead of a signal.
void installSignalHandlers();

/// While one exists, the first SIGINT or SIGTERM does not end the program, whatever it is doing:
/// the next SignalWatch has it, as if it had just arrived. The second one does. For the main
/// thread; one at a time.
class FirstSignalKept {
public:
    FirstSignalKept();
    ~FirstSignalKept();
    FirstSignalKept(const FirstSignalKept&) = delete;
    FirstSignalKept& operator=(const FirstSignalKept&) = delete;
};

/// The last signal that was kept, or given by a SignalWatch. 0 for none.
int signalThatCame();

/// While one exists, SIGINT and SIGTERM are held back for its owner to take. Threads that are
/// started meanwhile hold them back for good, so that the kernel never hands one to them: make it
/// before the library starts its threads.
class SignalWatch {
public:
    SignalWatch();
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    /// Readable when a signal has arrived.
    int fileDescriptor() const { return descriptor_; }
    /// The signal that arrived.
    int take();

private:
    sigset_t previous_;
    int descriptor_;
};

}  // namespace korvogit
