// The library's inner work, each against what it could cost at least. The page is a generated one
// of a hundred repositories; its file is named in the environment by the driver.

#include <benchmark/benchmark.h>
#include <libdeflate.h>

#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <semaphore>
#include <string>

#include "KorvoGitService/KorvoGitService.h"
#include "benchmarks/common/Client.h"
#include "benchmarks/floors/PageReader.h"
#include "support/JSONReading.h"
#include "support/session/ContentDecoder.h"

namespace {

const std::string& page() {
    static const auto& text = [] {
        const char* const file = std::getenv("KORVOGIT_BENCHMARK_PAGE");
        std::ifstream stream(file ? file : "", std::ios::binary);
        if (!stream) bench::fail("KORVOGIT_BENCHMARK_PAGE names no file");
        return *new std::string(std::istreambuf_iterator<char>(stream), {});
    }();
    return text;
}

std::string compressedPage() {
    auto* const compressor = libdeflate_alloc_compressor(6);
    std::string bytes(libdeflate_gzip_compress_bound(compressor, page().size()), '\0');
    bytes.resize(libdeflate_gzip_compress(compressor, page().data(), page().size(), bytes.data(),
                                          bytes.size()));
    libdeflate_free_compressor(compressor);
    return bytes;
}

/// Shows what an adapter does with a page that has arrived.
class Reader : public RKTGitHubService {
public:
    using RKTGitHubService::RKTGitHubService;

    void read(std::string& text, RKTServiceArrayResult& result) const {
        const auto document = rkt::JSONDocumentInPlace(text, nullptr);
        listingForRequest(std::make_shared<const RKTRepositoriesRequest>())
            .read(document->root(), result);
    }
};

std::shared_ptr<Reader> reader() {
    return RKTService::make<Reader>(std::make_shared<const RKTServiceCredentials>(
        RKTServiceTypeGitHub, RKTServiceCredentialTypeToken));
}

void bytesToRecords(benchmark::State& state) {
    const auto service = reader();
    std::string body;
    body.reserve(page().size() + rkt::roomBehindJSON);  // as an inflated one
    body = page();
    for (auto _ : state) {
        RKTServiceArrayResult result;
        service->read(body, result);
        benchmark::DoNotOptimize(result);
    }
    service->invalidateAndCancel();
}
BENCHMARK(bytesToRecords);

void bytesToRecordsFloor(benchmark::State& state) {
    floors::PageReader floor;
    const simdjson::padded_string padded(page());
    for (auto _ : state) benchmark::DoNotOptimize(floor.read(padded));
}
BENCHMARK(bytesToRecordsFloor);

void inflating(benchmark::State& state) {
    const auto compressed = compressedPage();
    for (auto _ : state) {
        auto body = compressed;
        benchmark::DoNotOptimize(rkt::decodeContent(body, "gzip", std::size_t{256} << 20));
        benchmark::DoNotOptimize(body);
    }
}
BENCHMARK(inflating);

void inflatingFloor(benchmark::State& state) {
    const auto compressed = compressedPage();
    auto* const decompressor = libdeflate_alloc_decompressor();
    std::string room(page().size(), '\0');
    for (auto _ : state) {
        benchmark::DoNotOptimize(libdeflate_gzip_decompress(
            decompressor, compressed.data(), compressed.size(), room.data(), room.size(), nullptr));
    }
    libdeflate_free_decompressor(decompressor);
}
BENCHMARK(inflatingFloor);

void URLValidity(benchmark::State& state) {
    const std::string text = "https://github.com/octavia-labs/amber_notebook-17";
    for (auto _ : state) benchmark::DoNotOptimize(RKTURL::URLWithString(text));
}
BENCHMARK(URLValidity);

void URLValidityFloor(benchmark::State& state) {  // a copy, which both must make
    const std::string text = "https://github.com/octavia-labs/amber_notebook-17";
    for (auto _ : state) benchmark::DoNotOptimize(std::string(text));
}
BENCHMARK(URLValidityFloor);

void cloneAddress(benchmark::State& state) {
    const std::string text = "git@github.com:octavia-labs/amber_notebook-17.git";
    for (auto _ : state) benchmark::DoNotOptimize(rkt_URLWithString(text));
}
BENCHMARK(cloneAddress);

void queryParameters(benchmark::State& state) {
    const auto url = RKTURL::URLWithString(
        "https://api.github.com/user/repos?per_page=100&page=17&sort=pushed&direction=desc");
    for (auto _ : state) benchmark::DoNotOptimize(kc_queryParameters(*url));
}
BENCHMARK(queryParameters);

void linkHeader(benchmark::State& state) {
    const RKTHTTPURLResponse response(
        RKTURL::URLWithString("https://api.github.com/user/repos"), 200,
        {{"Link",
          "<https://api.github.com/user/repos?per_page=100&page=3>; rel=\"next\", "
          "<https://api.github.com/user/repos?per_page=100&page=30>; rel=\"last\", "
          "<https://api.github.com/user/repos?per_page=100&page=1>; rel=\"first\", "
          "<https://api.github.com/user/repos?per_page=100&page=1>; rel=\"prev\""}});
    for (auto _ : state) {
        benchmark::DoNotOptimize(RKTServiceArrayResult::resultWithHTTPURLResponse(&response));
    }
}
BENCHMARK(linkHeader);

void queueHop(benchmark::State& state) {
    RKTOperationQueue queue;
    for (auto _ : state) {
        std::binary_semaphore ran(0);
        queue.addOperation([&] { ran.release(); });
        ran.acquire();
    }
}
BENCHMARK(queueHop)->MeasureProcessCPUTime();

void queueHopFloor(benchmark::State& state) {
    boost::asio::thread_pool pool(2);
    auto strand = boost::asio::make_strand(pool);
    for (auto _ : state) {
        std::binary_semaphore ran(0);
        boost::asio::post(strand, [&] { ran.release(); });
        ran.acquire();
    }
}
BENCHMARK(queueHopFloor)->MeasureProcessCPUTime();

}  // namespace

BENCHMARK_MAIN();
