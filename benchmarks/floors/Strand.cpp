// A bare strand over a pool of threads: from posting an operation on another thread until it runs.

#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <semaphore>

#include "benchmarks/common/Client.h"

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    boost::asio::thread_pool pool(2);
    auto strand = boost::asio::make_strand(pool);
    std::vector<double> samples;
    for (std::size_t i = 0; i < arguments.number("samples"); ++i) {
        std::binary_semaphore ran(0);
        double end = 0;
        const auto start = bench::Moment::now().clock;
        boost::asio::post(strand, [&] {
            end = bench::Moment::now().clock;
            ran.release();
        });
        ran.acquire();
        samples.push_back(end - start);
    }
    bench::print({{"median_us", bench::percentile(samples, 0.5)},
                  {"p99_us", bench::percentile(samples, 0.99)}});
}
