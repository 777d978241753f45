// What services cost that have nothing to do.

#include <malloc.h>

#include <vector>

#include "benchmarks/library/Account.h"

namespace {

double heapBytes() {
    const auto heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

}  // namespace

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    const auto number = arguments.number("services");
    const auto account = bench::account(RKTServiceTypeGitHub);
    RKTService::serviceWithCredentials(account)->invalidateAndCancel();

    std::vector<std::shared_ptr<RKTService>> services;
    services.reserve(number);
    const auto heap = heapBytes();
    const auto resident = bench::processStatus("VmRSS");
    auto figures = bench::measure([&] {
        for (std::size_t i = 0; i < number; ++i) {
            services.push_back(RKTService::serviceWithCredentials(account));
        }
    });
    const auto each = static_cast<double>(number);
    figures["bytes_each"] = (heapBytes() - heap) / each;
    figures["resident_bytes_each"] = (bench::processStatus("VmRSS") - resident) * 1024 / each;
    figures["threads"] = bench::processStatus("Threads");
    for (const auto& service : services) service->invalidateAndCancel();
    bench::print(figures);
}
