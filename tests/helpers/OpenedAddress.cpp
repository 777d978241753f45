#include "tests/helpers/OpenedAddress.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

OpenedAddress::OpenedAddress() {
    // Open for both directions, so that neither side waits for the other.
    if (mkfifo(pipe().c_str(), 0600) != 0 ||
        (pipe_ = open(pipe().c_str(), O_RDWR | O_CLOEXEC)) < 0) {
        throw std::system_error(errno, std::generic_category(), "mkfifo");
    }
}

OpenedAddress::~OpenedAddress() {
    close(pipe_);
}

std::string OpenedAddress::command() const {
    return "echo >" + pipe().string();
}

std::string OpenedAddress::wait() const {
    std::string address;
    pollfd descriptor = {pipe_, POLLIN, 0};
    while (poll(&descriptor, 1, 30'000) == 1) {
        char next = '\0';
        if (read(pipe_, &next, 1) != 1) break;
        if (next == '\n') return address;
        address += next;
    }
    throw std::runtime_error("no address was opened");
}
