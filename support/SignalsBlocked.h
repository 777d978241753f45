// Starting threads that leave signals to the application.

#pragma once

#include <csignal>

namespace rkt {

/// Blocks all signals for the calling thread as long as it lives; threads that are started
/// meanwhile keep them blocked.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &previous_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t previous_;
};

}  // namespace rkt
