#include "benchmarks/common/Client.h"

#include <sys/resource.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace bench {

Arguments::Arguments(int count, char** words) {
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        const auto equals = word.find('=');
        if (equals == std::string::npos) fail("not name=value: " + word);
        values_[word.substr(0, equals)] = word.substr(equals + 1);
    }
}

std::string Arguments::text(const std::string& name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) fail("missing: " + name + "=");
    return found->second;
}

std::size_t Arguments::number(const std::string& name) const {
    const auto value = text(name);
    std::size_t number = 0;
    const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
    if (result.ec != std::errc() || result.ptr != value.data() + value.size()) {
        fail("not a number: " + name + "=" + value);
    }
    return number;
}

void print(const Figures& figures) {
    const char* separator = "{";
    for (const auto& [name, value] : figures) {
        std::printf("%s\"%s\": %.3f", separator, name.c_str(), value);
        separator = ", ";
    }
    std::printf("}\n");
}

Moment Moment::now() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto microseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
    };
    const std::chrono::duration<double, std::micro> clock =
        std::chrono::steady_clock::now().time_since_epoch();
    return {microseconds(usage.ru_utime) + microseconds(usage.ru_stime), clock.count()};
}

double processStatus(std::string_view name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(std::string(name) + ":")) return std::atof(&line[name.size() + 1]);
    }
    fail("the system does not tell " + std::string(name));
}

std::uint64_t (*allocationCount)() = nullptr;

Figures measure(const std::function<void()>& work) {
    const auto allocationsBefore = allocationCount ? allocationCount() : 0;
    const auto before = Moment::now();
    work();
    const auto after = Moment::now();
    Figures figures{{"cpu_us", after.processor - before.processor},
                    {"wall_us", after.clock - before.clock},
                    {"peak_kb", processStatus("VmHWM")}};
    if (allocationCount) {
        figures["allocations"] = static_cast<double>(allocationCount() - allocationsBefore);
    }
    return figures;
}

std::string pageURL(const std::string& base, std::size_t perPage, std::size_t index) {
    return base + "/user/repos?per_page=" + std::to_string(perPage) +
           "&page=" + std::to_string(index + 1);
}

double percentile(std::vector<double> samples, double share) {
    if (samples.empty()) fail("nothing was measured");
    std::ranges::sort(samples);
    const auto place = std::ceil(share * static_cast<double>(samples.size()));
    return samples[std::max<std::size_t>(static_cast<std::size_t>(place), 1) - 1];
}

void fail(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(1);
}

}  // namespace bench
