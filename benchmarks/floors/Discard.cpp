// What a user gets from libcurl by itself: the body decoded by libcurl and thrown away.

#include "benchmarks/common/Client.h"
#include "benchmarks/floors/Multi.h"

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    const auto perPage = arguments.number("per-page");
    floors::Multi multi(arguments.text("origin"), arguments.text("ca"), arguments.number("at-once"),
                        floors::Multi::Bodies::DecodedAndDiscarded, [](const std::string&) {});
    const auto list = [&](std::size_t pages) {
        multi.get(pages, [&](std::size_t index) {
            return bench::pageURL("https://api.github.com", perPage, index);
        });
    };
    list(arguments.number("warm"));
    bench::print(bench::measure([&] { list(arguments.number("pages")); }));
}
