#include "Signals.h"

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>
#include <system_error>

#include "ExitStatus.h"

namespace korvogit {

namespace {

constexpr std::initializer_list<int> endingSignals = {SIGINT, SIGTERM};

extern "C" void endAtOnce(int signal) {
    _exit(exitStatusOfSignal(signal));
}

sigset_t setOfEndingSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : endingSignals) sigaddset(&set, signal);
    return set;
}

}  // namespace

void installSignalHandlers() {
    // Also where a shell made its background job ignore SIGINT: whoever sends it means it.
    struct sigaction action = {};
    action.sa_handler = endAtOnce;
    for (const int signal : endingSignals) sigaction(signal, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

SignalWatch::SignalWatch() {
    const sigset_t set = setOfEndingSignals();
    pthread_sigmask(SIG_BLOCK, &set, &previous_);
    descriptor_ = signalfd(-1, &set, SFD_CLOEXEC);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
}

SignalWatch::~SignalWatch() {
    close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

int SignalWatch::take() {
    signalfd_siginfo information = {};
    while (read(descriptor_, &information, sizeof information) < 0 && errno == EINTR) {
    }
    return static_cast<int>(information.ssi_signo);
}

}  // namespace korvogit
