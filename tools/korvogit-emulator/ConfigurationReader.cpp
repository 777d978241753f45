#include "ConfigurationReader.h"

#include <utility>

namespace emulator {

JSONReader::JSONReader(const nlohmann::json& value, std::string place)
    : value_(&value), place_(std::move(place)) {
    if (!value.is_object()) {
        throw Placed((place_.empty() ? std::string() : place_ + ": ") + "an object is needed");
    }
}

std::string JSONReader::placeOf(const std::string& member) const {
    return place_.empty() ? member : place_ + "." + member;
}

void JSONReader::fail(const std::string& member, const std::string& problem) const {
    throw Placed(placeOf(member) + ": " + problem);
}

const nlohmann::json* JSONReader::find(const char* member) const {
    asked_.insert(member);
    const auto found = value_->find(member);
    return found == value_->end() ? nullptr : &*found;
}

bool JSONReader::has(const char* member) const {
    return find(member) != nullptr;
}

bool JSONReader::isList(const char* member) const {
    const auto* const value = find(member);
    return value != nullptr && value->is_array();
}

std::optional<std::string> JSONReader::optionalText(const char* member) const {
    const auto* const value = find(member);
    if (value == nullptr) return std::nullopt;
    if (!value->is_string()) fail(member, "a text is needed");
    return value->get<std::string>();
}

std::string JSONReader::text(const char* member) const {
    auto value = optionalText(member);
    if (!value) fail(member, "this is missing");
    return *std::move(value);
}

std::vector<std::string> JSONReader::texts(const char* member,
                                           std::vector<std::string> otherwise) const {
    const auto* const value = find(member);
    if (value == nullptr) return otherwise;
    if (!value->is_array()) fail(member, "a list of texts is needed");
    std::vector<std::string> result;
    for (const auto& element : *value) {
        if (!element.is_string()) fail(member, "a list of texts is needed");
        result.push_back(element.get<std::string>());
    }
    return result;
}

bool JSONReader::flag(const char* member, bool otherwise) const {
    const auto* const value = find(member);
    if (value == nullptr) return otherwise;
    if (!value->is_boolean()) fail(member, "true or false is needed");
    return value->get<bool>();
}

std::int64_t JSONReader::number(const char* member, std::int64_t otherwise, std::int64_t atMost,
                                std::int64_t atLeast) const {
    const auto* const value = find(member);
    if (value == nullptr) return otherwise;
    // Signed values beyond the range come as unsigned ones.
    const bool fits = value->is_number_integer() && value->get<std::int64_t>() >= atLeast &&
                      value->get<std::int64_t>() <= atMost;
    if (!fits) {
        fail(member, "a whole number from " + std::to_string(atLeast) + " to " +
                         std::to_string(atMost) + " is needed");
    }
    return value->get<std::int64_t>();
}

std::vector<JSONReader> JSONReader::elements(const char* member) const {
    const auto* const value = find(member);
    std::vector<JSONReader> readers;
    if (value == nullptr) return readers;
    if (!value->is_array()) fail(member, "a list is needed");
    for (const auto& element : *value) {
        readers.emplace_back(element, placeOf(member) + "[" + std::to_string(readers.size()) + "]");
    }
    return readers;
}

void JSONReader::requireNoOthers() const {
    for (const auto& [member, value] : value_->items()) {
        if (asked_.contains(member)) continue;
        std::string known;
        for (const auto& name : asked_) known += (known.empty() ? "" : ", ") + name;
        fail(member, "there is no such member, but " + known);
    }
}

}  // namespace emulator
