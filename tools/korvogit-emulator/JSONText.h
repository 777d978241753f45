#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace emulator {

/// The text of JSON that repeats a part of a request, whose bytes need not be UTF-8: U+FFFD stands
/// for those that are not.
inline std::string jsonText(const nlohmann::ordered_json& json) {
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace emulator
