// What makes a reader of foreign bytes a fuzzing program and a test.

#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fuzz {

/// Thrown for an input that the library reads wrongly. Nothing catches it in a fuzzing program,
/// which ends and keeps the input.
struct Broken : std::logic_error {
    using std::logic_error::logic_error;
};

/// Says that something holds for every input.
/// @param promise  what it is, for whoever looks into a find
inline void require(bool holds, std::string_view promise) {
    if (!holds) throw Broken(std::string(promise));
}

/// Takes the first line off the input, without its line feed.
inline std::string_view takeLine(std::string_view& input) {
    const auto line = input.substr(0, input.find('\n'));
    input.remove_prefix(line.size() < input.size() ? line.size() + 1 : line.size());
    return line;
}

/// Takes the first byte off the input; 0 at its end.
inline unsigned char takeByte(std::string_view& input) {
    if (input.empty()) return 0;
    const auto byte = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    return byte;
}

using Check = void (*)(std::string_view input);

/// Checks every seed of the target; throws when one breaks a promise, naming its file, or when
/// there are none.
void checkSeeds(const char* name, Check check);

}  // namespace fuzz

/// Begins the check of one input, which the name `input` stands for. Once in a file, which has the
/// target's name, as its folder of seeds has.
#ifdef KORVOGIT_FUZZ
#define FUZZ_TARGET(name)                                                               \
    static void check(std::string_view input);                                          \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
        check({reinterpret_cast<const char*>(data), size});                             \
        return 0;                                                                       \
    }                                                                                   \
    static void check(std::string_view input)
#else
#include <gtest/gtest.h>
#define FUZZ_TARGET(name)                                 \
    static void check(std::string_view input);            \
    TEST(FuzzSeeds, name) {                               \
        EXPECT_NO_THROW(fuzz::checkSeeds(#name, &check)); \
    }                                                     \
    static void check(std::string_view input)
#endif
