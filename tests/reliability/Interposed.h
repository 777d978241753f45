// Functions of other libraries that this test program has of its own, and that are found before
// those libraries' own: so a test decides what they do and how long they take.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/korvogit-emulator/Emulator.h"

/// getaddrinfo(), by which libcurl looks names up: no name server is asked. A name that was not set
/// here does not exist. Safe from any thread.
class Names {
public:
    Names() = delete;

    /// From now on the name has these addresses, in this order.
    static void set(const std::string& name, std::vector<std::string> addresses);
    /// Look-ups of the name are not answered before the gate is opened; then it does not exist.
    static std::shared_ptr<emulator::Gate> silence(const std::string& name);
};

/// socketpair(), by which libcurl makes what it is woken up by. A limit of the process would be the
/// sanitizers' too, which need descriptors to look at memory; and the thread sanitizer learns from
/// its own socket() who waits for whom.
class SocketPairs {
public:
    SocketPairs() = delete;

    /// Whether there is one, or no descriptor left for it.
    static void allow(bool allowed);
};

/// libdeflate_gzip_decompress_ex(), by which bodies are inflated.
class Inflating {
public:
    Inflating() = delete;

    /// From now on it waits at this gate first; at none, when it is empty.
    static void holdAt(std::shared_ptr<emulator::Gate> gate);
};
