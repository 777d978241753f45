// From loading the library at run time until it has told its service types.

#include <dlfcn.h>

#include "benchmarks/common/Client.h"

// Without headers of the library, which would have this program linked with it: the count of types
// comes from a plug-in of our own that is.
int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    const auto plugIn = arguments.text("plug-in");
    if (arguments.number("dependencies-first") == 1) {
        for (const auto* library :
             {"libcurl.so.4", "libssl.so.3", "libsimdjson.so.14", "liburiparser.so.1",
              "libicui18n.so.72", "libdeflate.so.0", "libbrotlidec.so.1"}) {
            if (!dlopen(library, RTLD_NOW)) bench::fail(dlerror());
        }
    }
    std::size_t types = 0;
    auto figures = bench::measure([&] {
        void* const library = dlopen(plugIn.c_str(), RTLD_LAZY);
        if (!library) bench::fail(dlerror());
        const auto function =
            reinterpret_cast<std::size_t (*)()>(dlsym(library, "registeredTypes"));
        if (!function) bench::fail(dlerror());
        types = function();
    });
    figures["types"] = static_cast<double>(types);
    bench::print(figures);
}
