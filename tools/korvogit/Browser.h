#pragma once

#include <sys/types.h>

#include <string>

namespace korvogit {

/// A person's browser: the first of the commands in the variable BROWSER that succeeds, or without
/// it xdg-open(1). Colons stand between the commands; the address stands where a command says %s,
/// or else at its end. The browser gets neither our signals nor our secrets.
class Browser {
public:
    /// Tries to show the address.
    explicit Browser(const std::string& url);
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    /// Readable when the program that was started has ended; negative when there is none.
    int fileDescriptor() const { return descriptor_; }
    /// True when nothing could be started, or it ended with a failure.
    bool hasFailed();

private:
    pid_t process_ = -1;
    int descriptor_ = -1;
    bool failed_ = false;
};

}  // namespace korvogit
