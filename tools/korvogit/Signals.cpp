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

volatile std::sig_atomic_t keepsFirst = 0;
volatile std::sig_atomic_t kept = 0;

extern "C" void keepFirstOrEnd(int signal) {
    if (keepsFirst == 0 || kept != 0) _exit(exitStatusOfSignal(signal));
    kept = signal;
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
    action.sa_handler = keepFirstOrEnd;
    action.sa_flags = SA_RESTART;  // output goes on after one that is kept
    action.sa_mask = setOfEndingSignals();
    for (const int signal : endingSignals) sigaction(signal, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

FirstSignalKept::FirstSignalKept() {
    kept = 0;
    keepsFirst = 1;
}

FirstSignalKept::~FirstSignalKept() {
    keepsFirst = 0;
}

int signalThatCame() {
    return kept;
}

SignalWatch::SignalWatch() {
    const sigset_t set = setOfEndingSignals();
    pthread_sigmask(SIG_BLOCK, &set, &previous_);
    descriptor_ = signalfd(-1, &set, SFD_CLOEXEC);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
    if (keepsFirst != 0 && kept != 0) raise(kept);
}

SignalWatch::~SignalWatch() {
    close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

int SignalWatch::take() {
    signalfd_siginfo information = {};
    while (read(descriptor_, &information, sizeof information) < 0 && errno == EINTR) {
    }
    const auto signal = static_cast<int>(information.ssi_signo);
    kept = signal;
    return signal;
}

}  // namespace korvogit
