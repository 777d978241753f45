#include "tests/reliability/Interposed.h"

#include <dlfcn.h>
#include <libdeflate.h>
#include <netdb.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <future>
#include <map>
#include <mutex>
#include <utility>

namespace {

struct Name {
    std::vector<std::string> addresses{};
    std::shared_ptr<emulator::Gate> gate{};
};

std::mutex mutex;
std::shared_ptr<emulator::Gate> inflatingGate;

void pass(emulator::Gate& gate) {
    const auto opened = std::make_shared<std::promise<void>>();
    gate.arrive([opened] { opened->set_value(); });
    opened->get_future().wait();
}

template <class Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

std::atomic<bool> socketPairsAllowed = true;

// Never destroyed: look-ups may last until the process ends.
std::map<std::string, Name>& known() {
    static auto& names = *new std::map<std::string, Name>;
    return names;
}

Name find(const std::string& name) {
    const std::lock_guard lock(mutex);
    const auto found = known().find(name);
    return found == known().end() ? Name{} : found->second;
}

int lookUpAddress(const char* address, const char* service, const addrinfo* hints,
                  addrinfo** result) {
    static const auto libraryFunction = next<decltype(&getaddrinfo)>("getaddrinfo");
    auto numeric = hints ? *hints : addrinfo{};
    numeric.ai_flags |= AI_NUMERICHOST;
    return libraryFunction(address, service, &numeric, result);
}

}  // namespace

void Names::set(const std::string& name, std::vector<std::string> addresses) {
    const std::lock_guard lock(mutex);
    known()[name] = {std::move(addresses)};
}

std::shared_ptr<emulator::Gate> Names::silence(const std::string& name) {
    auto gate = std::make_shared<emulator::Gate>();
    const std::lock_guard lock(mutex);
    known()[name] = {{}, gate};
    return gate;
}

void SocketPairs::allow(bool allowed) {
    socketPairsAllowed = allowed;
}

extern "C" int socketpair(int domain, int type, int protocol, int* pair) noexcept {
    static const auto libraryFunction = next<decltype(&socketpair)>("socketpair");
    if (socketPairsAllowed) return libraryFunction(domain, type, protocol, pair);
    errno = EMFILE;
    return -1;
}

void Inflating::holdAt(std::shared_ptr<emulator::Gate> gate) {
    const std::lock_guard lock(mutex);
    inflatingGate.swap(gate);
}

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints,
                           addrinfo** result) {
    const int numeric = lookUpAddress(node, service, hints, result);
    if (!node || numeric == 0) return numeric;
    const auto name = find(node);
    if (name.gate) pass(*name.gate);
    addrinfo** end = result;
    *end = nullptr;
    for (const auto& address : name.addresses) {
        if (const int error = lookUpAddress(address.c_str(), service, hints, end)) return error;
        while (*end) end = &(*end)->ai_next;
    }
    return *result ? 0 : EAI_NONAME;
}

extern "C" libdeflate_result libdeflate_gzip_decompress_ex(libdeflate_decompressor* decompressor,
                                                           const void* in, std::size_t inSize,
                                                           void* out, std::size_t outSize,
                                                           std::size_t* consumed,
                                                           std::size_t* produced) {
    static const auto libraryFunction =
        next<decltype(&libdeflate_gzip_decompress_ex)>("libdeflate_gzip_decompress_ex");
    std::unique_lock lock(mutex);
    const auto gate = inflatingGate;
    lock.unlock();
    if (gate) pass(*gate);
    return libraryFunction(decompressor, in, inSize, out, outSize, consumed, produced);
}
