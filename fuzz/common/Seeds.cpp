#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/common/Target.h"

namespace fuzz {

void checkSeeds(const char* name, Check check) {
    int count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(FUZZ_SEEDS) / name)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string seed{std::istreambuf_iterator<char>(file), {}};
        try {
            check(seed);
        } catch (const std::exception& error) {
            throw Broken(entry.path().string() + ": " + error.what());
        }
        ++count;
    }
    require(count > 0, "there are seeds");
}

}  // namespace fuzz
