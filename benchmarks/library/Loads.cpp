// Many answers through one session: small ones with many requests in flight, or large ones.

#include <atomic>
#include <semaphore>
#include <string>

#include "benchmarks/library/Account.h"

namespace {

class Requester {
public:
    explicit Requester(std::string url) : url_(std::move(url)) {}

    /// Ends the program when a load fails.
    void load(std::size_t requests, std::size_t inFlight) {
        if (requests == 0) return;
        bytes_ = 0;
        left_ = requests;
        toBegin_ = requests;
        for (std::size_t i = 0; i < inFlight; ++i) beginOne();
        done_.acquire();
    }

    double bytes() const { return static_cast<double>(bytes_); }

private:
    void beginOne() {
        for (auto left = toBegin_.load(); left > 0;) {
            if (!toBegin_.compare_exchange_weak(left, left - 1)) continue;
            session_
                ->dataTaskWithRequest(RKTURLRequest(RKTURL::URLWithString(url_)),
                                      [this](auto data, auto response, auto error) {
                                          took(std::move(data), response, error);
                                      })
                ->resume();
            return;
        }
    }

    void took(std::optional<std::string> data,
              const std::shared_ptr<const RKTHTTPURLResponse>& response,
              const std::optional<RKTError>& error) {
        if (error) bench::fail("a load failed: " + bench::description(*error));
        if (response->statusCode() != 200) bench::fail("an answer was refused");
        bytes_ += data->size();
        beginOne();
        if (--left_ == 0) done_.release();
    }

    const std::string url_;
    const std::shared_ptr<RKTURLSession> session_ = RKTURLSession::sessionWithConfiguration(
        RKTURLSessionConfiguration::ephemeralSessionConfiguration());
    std::atomic<std::size_t> toBegin_ = 0;
    std::atomic<std::size_t> left_ = 0;
    std::atomic<std::size_t> bytes_ = 0;
    std::binary_semaphore done_{0};
};

}  // namespace

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    bench::useOrigin(arguments);
    Requester requester("https://api.github.com" + arguments.text("path"));
    const auto inFlight = arguments.number("in-flight");
    requester.load(arguments.number("warm"), inFlight);
    auto figures = bench::measure([&] { requester.load(arguments.number("requests"), inFlight); });
    figures["bytes"] = requester.bytes();
    bench::print(figures);
}
