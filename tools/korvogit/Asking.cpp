#include "Asking.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "ExitStatus.h"

namespace korvogit {

int exitStatus(const std::optional<RKTError>& error, int signal) {
    if (signal != 0) return exitStatusOfSignal(signal);
    return error ? ExitFailure : ExitSuccess;
}

WakeUp::WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC)) {
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

WakeUp::~WakeUp() {
    close(descriptor_);
}

void WakeUp::wake() {
    eventfd_write(descriptor_, 1);
}

int waitForHandler(int descriptor, RKTURLSessionDataTask& task,
                   std::unique_ptr<SignalWatch> signals, Spinner& spinner) {
    int signal = 0;
    while (true) {
        std::array<pollfd, 2> descriptors = {
            {{descriptor, POLLIN, 0}, {signals ? signals->fileDescriptor() : -1, POLLIN, 0}}};
        const int ready = poll(descriptors.data(), descriptors.size(), spinner.timeout());
        if (ready == 0) spinner.turn();
        if (descriptors[1].revents != 0) {
            signal = signals->take();
            signals.reset();
            spinner.stop();
            task.cancel();
        } else if (descriptors[0].revents != 0) {
            return signal;
        }
    }
}

Conversation::Conversation(const std::shared_ptr<RKTServiceCredentials>& credentials,
                           std::string serviceName)
    : serviceName_(std::move(serviceName)) {
    const SignalWatch whileThreadsStart;
    service_ = RKTService::serviceWithCredentials(credentials);
}

RKTError errorForMissingOperation(const std::string& serviceName) {
    return RKTError("RKTInvalidArgumentException", 0,
                    {{RKTError::NSLocalizedDescriptionKey,
                      serviceName + " cannot be asked yet: the library has no network operations "
                                    "for it."}});
}

}  // namespace korvogit
