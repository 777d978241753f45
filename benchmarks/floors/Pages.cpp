// The floor of the whole path: bare curl_multi, libdeflate into a buffer that is used again, one
// pass of simdjson into bare structs; one thread does all.

#include <libdeflate.h>

#include <cstring>
#include <optional>
#include <vector>

#include "benchmarks/common/Client.h"
#include "benchmarks/floors/Multi.h"
#include "benchmarks/floors/PageReader.h"

namespace {

class Inflater {
public:
    simdjson::padded_string_view inflate(const std::string& gzip) {
        // A gzip member ends with its size; the origin is trusted here.
        std::uint32_t size = 0;
        std::memcpy(&size, gzip.data() + gzip.size() - sizeof size, sizeof size);
        if (buffer_.size() < size + simdjson::SIMDJSON_PADDING) {
            buffer_.resize(size + simdjson::SIMDJSON_PADDING);
        }
        if (libdeflate_gzip_decompress(decompressor_, gzip.data(), gzip.size(), buffer_.data(),
                                       size, nullptr) != LIBDEFLATE_SUCCESS) {
            bench::fail("the floor could not inflate a page");
        }
        return simdjson::padded_string_view(buffer_.data(), size, buffer_.size());
    }

private:
    libdeflate_decompressor* const decompressor_ = libdeflate_alloc_decompressor();
    std::vector<char> buffer_;
};

}  // namespace

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    const auto perPage = arguments.number("per-page");
    Inflater inflater;
    floors::PageReader reader;
    std::vector<std::vector<floors::Repository>> pages;
    floors::Multi multi(arguments.text("origin"), arguments.text("ca"), arguments.number("at-once"),
                        floors::Multi::Bodies::Kept, [&](const std::string& body) {
                            pages.push_back(reader.read(inflater.inflate(body)));
                        });
    const auto list = [&](std::size_t pageCount) {
        pages.clear();
        multi.get(pageCount, [&](std::size_t index) {
            return bench::pageURL("https://api.github.com", perPage, index);
        });
    };
    list(arguments.number("warm"));
    auto figures = bench::measure([&] { list(arguments.number("pages")); });
    std::size_t records = 0;
    for (const auto& page : pages) records += page.size();
    figures["records"] = static_cast<double>(records);
    bench::print(figures);
}
