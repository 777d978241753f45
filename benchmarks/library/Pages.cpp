// Lists pages of repositories through one service: the whole path, from the request to the records.

#include <atomic>
#include <functional>
#include <semaphore>
#include <vector>

#include "benchmarks/library/Account.h"

namespace {

/// Keeps so many requests on the way until all pages have come. Everything but the start happens in
/// handlers, one at a time.
class Lister {
public:
    Lister(const std::string& serviceType, std::size_t perPage)
        : service_(RKTService::serviceWithCredentials(bench::account(serviceType))),
          perPage_(perPage) {}
    ~Lister() { service_->invalidateAndCancel(); }
    Lister(const Lister&) = delete;
    Lister& operator=(const Lister&) = delete;

    void list(std::size_t pages, std::size_t atOnce) {
        if (pages == 0) return;
        results_.clear();
        left_ = pages;
        pages_ = pages;
        next_ = std::min(pages, atOnce);
        for (std::size_t index = 0; index < std::min(pages, atOnce); ++index) request(index);
        done_.acquire();
    }

    double records() const {
        std::size_t count = 0;
        for (const auto& result : results_) count += result->results()->size();
        return static_cast<double>(count);
    }

private:
    void request(std::size_t index) {
        auto request = std::make_shared<RKTRepositoriesRequest>();
        request->setPage(RKTNumber(index + 1));
        request->setCountPerPage(RKTNumber(perPage_));
        service_->fetchRepositoriesWithRequest(std::move(request),
                                               [this](auto result) { took(std::move(result)); });
    }

    void took(std::shared_ptr<RKTServiceArrayResult> result) {
        if (const auto error = result->error()) {
            bench::fail("a page failed: " + bench::description(*error));
        }
        results_.push_back(std::move(result));
        if (const auto index = next_.fetch_add(1); index < pages_) request(index);
        if (--left_ == 0) done_.release();
    }

    const std::shared_ptr<RKTService> service_;
    const std::size_t perPage_;
    std::size_t pages_ = 0;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<std::size_t> left_ = 0;
    std::binary_semaphore done_{0};
    std::vector<std::shared_ptr<RKTServiceArrayResult>> results_;
};

}  // namespace

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    bench::useOrigin(arguments);
    const auto service = arguments.text("service");
    const auto warmService = arguments.text("warm-service");
    const auto perPage = arguments.number("per-page");
    const auto atOnce = arguments.number("at-once");
    Lister lister(service, perPage);
    if (warmService == service) {
        lister.list(arguments.number("warm"), atOnce);
    } else {
        Lister(warmService, perPage).list(arguments.number("warm"), atOnce);
    }
    auto figures = bench::measure([&] { lister.list(arguments.number("pages"), atOnce); });
    figures["records"] = lister.records();
    bench::print(figures);
}
