// From cancel() until the handler runs, with many requests waiting for an answer that does not
// come.

#include <atomic>
#include <semaphore>
#include <vector>

#include "benchmarks/library/Account.h"

namespace {

class Waiting {
public:
    explicit Waiting(RKTURLSession& session, const std::string& url)
        : task_(session.dataTaskWithRequest(
              RKTURLRequest(RKTURL::URLWithString(url)),
              [this](const auto&, const auto&, const std::optional<RKTError>& error) {
                  ended_ = bench::Moment::now().clock;
                  if (!error || error->code() != RKTError::NSURLErrorCancelled) {
                      bench::fail("a task ended by itself");
                  }
                  done_.release();
              })) {
        task_->resume();
    }

    double microsecondsToCancel() {
        const auto start = bench::Moment::now().clock;
        task_->cancel();
        done_.acquire();
        return ended_ - start;
    }

private:
    double ended_ = 0;
    std::binary_semaphore done_{0};
    const std::shared_ptr<RKTURLSessionDataTask> task_;
};

// Its answer comes after the requests before it are on their way.
void loadSmall(RKTURLSession& session) {
    std::binary_semaphore done(0);
    session
        .dataTaskWithRequest(RKTURLRequest(RKTURL::URLWithString("https://api.github.com/small")),
                             [&](const auto&, const auto&, const auto&) { done.release(); })
        ->resume();
    done.acquire();
}

}  // namespace

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    bench::useOrigin(arguments);
    const auto session = RKTURLSession::sessionWithConfiguration(
        RKTURLSessionConfiguration::ephemeralSessionConfiguration());
    loadSmall(*session);
    std::vector<std::unique_ptr<Waiting>> tasks;
    for (std::size_t i = 0; i < arguments.number("in-flight"); ++i) {
        tasks.push_back(std::make_unique<Waiting>(*session, "https://api.github.com/hang"));
    }
    loadSmall(*session);
    std::vector<double> samples;
    for (const auto& task : tasks) samples.push_back(task->microsecondsToCancel());
    bench::print({{"median_us", bench::percentile(samples, 0.5)},
                  {"p99_us", bench::percentile(samples, 0.99)}});
}
