// The first request to each of several origins, in a process that has loaded from another before.

#include <semaphore>
#include <sstream>

#include "benchmarks/library/Account.h"

namespace {

void load(RKTURLSession& session, const std::string& url) {
    std::binary_semaphore done(0);
    session
        .dataTaskWithRequest(
            RKTURLRequest(RKTURL::URLWithString(url)),
            [&](const std::optional<std::string>& data, const auto&, const auto& error) {
                if (error) bench::fail("a load failed: " + bench::description(*error));
                if (data->size() < 1024) bench::fail("an answer is short");
                done.release();
            })
        ->resume();
    done.acquire();
}

}  // namespace

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    RKTNetworkSettings settings;
    settings.certificateAuthorityFile = arguments.text("ca");
    const auto session = RKTURLSession::sessionWithConfiguration({settings});
    std::vector<double> clock;
    std::vector<double> processor;
    std::istringstream ports(arguments.text("ports"));
    for (std::string port; std::getline(ports, port, ',');) {
        std::string url = "https://localhost:" + port + arguments.text("path");
        const auto before = bench::Moment::now();
        load(*session, url);
        const auto after = bench::Moment::now();
        clock.push_back(after.clock - before.clock);
        processor.push_back(after.processor - before.processor);
    }
    // The very first also starts the loader and reads the authorities.
    const double first = clock.front();
    clock.erase(clock.begin());
    processor.erase(processor.begin());
    bench::print({{"first_wall_us", first},
                  {"wall_us", bench::percentile(clock, 0.5)},
                  {"cpu_us", bench::percentile(processor, 0.5)}});
}
