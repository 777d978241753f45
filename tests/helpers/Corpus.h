// Cases with answers, one JSON object a line, from tests/data/corpora.

#ifndef KORVOGITSERVICE_TESTS_HELPERS_CORPUS_H
#define KORVOGITSERVICE_TESTS_HELPERS_CORPUS_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace rkt::tests {

/// @param name  the file's, without its extension. A file that is missing or empty is an error.
std::vector<nlohmann::json> corpus(const std::string& name);

/// A text of a case, where null stands for nothing.
std::optional<std::string> textOrNothing(const nlohmann::json& value);

}  // namespace rkt::tests

#endif
