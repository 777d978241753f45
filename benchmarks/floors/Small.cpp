// Many small answers over bare curl_multi, each kept as text.

#include "benchmarks/common/Client.h"
#include "benchmarks/floors/Multi.h"

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    std::size_t bytes = 0;
    floors::Multi multi(arguments.text("origin"), arguments.text("ca"),
                        arguments.number("in-flight"), floors::Multi::Bodies::Kept,
                        [&](const std::string& body) { bytes += body.size(); });
    const auto url = [path = arguments.text("path")](std::size_t) {
        return "https://api.github.com" + path;
    };
    multi.get(arguments.number("warm"), url);
    bytes = 0;
    auto figures = bench::measure([&] { multi.get(arguments.number("requests"), url); });
    figures["bytes"] = static_cast<double>(bytes);
    bench::print(figures);
}
