#include "tests/helpers/Corpus.h"

#include <fstream>
#include <stdexcept>

namespace rkt::tests {

std::vector<nlohmann::json> corpus(const std::string& name) {
    std::ifstream file(TEST_DATA_DIR "/corpora/" + name + ".jsonl");
    std::vector<nlohmann::json> cases;
    for (std::string line; std::getline(file, line);) cases.push_back(nlohmann::json::parse(line));
    if (cases.empty()) throw std::runtime_error("no cases in the corpus " + name);
    return cases;
}

std::optional<std::string> textOrNothing(const nlohmann::json& value) {
    if (value.is_null()) return std::nullopt;
    return value.get<std::string>();
}

}  // namespace rkt::tests
