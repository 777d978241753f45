// What every measured program does alike: reads its arguments, warms up, measures, prints one line.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// "name=value" words. A missing or malformed one ends the program with a message.
class Arguments {
public:
    Arguments(int count, char** words);
    std::string text(const std::string& name) const;
    std::size_t number(const std::string& name) const;

private:
    std::map<std::string, std::string> values_;
};

/// Figures by name, printed as one JSON object.
using Figures = std::map<std::string, double>;
void print(const Figures& figures);

/// Processor time of the whole process, user and system, and time on the clock; in microseconds.
struct Moment {
    double processor;
    double clock;
    static Moment now();
};

/// A line of /proc/self/status: "VmHWM", "VmRSS" (both in KiB), "Threads".
double processStatus(std::string_view name);

/// How often the process has taken memory from the heap. Null unless Allocations.cpp is linked.
extern std::uint64_t (*allocationCount)();

/// Runs `work` and returns "cpu_us" and "wall_us" of it, "peak_kb" of the process up to then, and
/// "allocations" where they are counted.
Figures measure(const std::function<void()>& work);

/// The page that is asked for as the `index`-th: the origin has `pages` of them.
std::string pageURL(const std::string& base, std::size_t perPage, std::size_t index);

/// The value below which the given share (0 to 1) of the samples lies.
double percentile(std::vector<double> samples, double share);

[[noreturn]] void fail(const std::string& message);

}  // namespace bench
