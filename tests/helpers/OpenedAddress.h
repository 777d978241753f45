// What a program opens in a browser.

#pragma once

#include <filesystem>
#include <string>

#include "tests/helpers/TemporaryFolder.h"

/// A stand-in for a browser: hands the address that it is told to open to the test.
class OpenedAddress {
public:
    /// @throws std::system_error
    OpenedAddress();
    ~OpenedAddress();
    OpenedAddress(const OpenedAddress&) = delete;
    OpenedAddress& operator=(const OpenedAddress&) = delete;

    /// For the variable BROWSER.
    std::string command() const;
    /// Where it hands the address over, as a line.
    std::filesystem::path pipe() const { return folder_.path() / "address"; }
    /// @throws std::runtime_error when none comes
    std::string wait() const;

private:
    const rkt::tests::TemporaryFolder folder_;
    int pipe_ = -1;
};
