#include "RepositorySorting.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace korvogit {

namespace {

struct Entry {
    FieldValue key;
    std::size_t place;
    std::shared_ptr<RKTServiceRepository> repository;
};

std::string folded(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

/// Integers exactly, as far as they fit into 64 bits with a sign.
bool isLess(const RKTNumber& left, const RKTNumber& right) {
    const double leftValue = left.doubleValue();
    const double rightValue = right.doubleValue();
    if (leftValue < rightValue || rightValue < leftValue) return leftValue < rightValue;
    return left.integerValue() < right.integerValue();
}

/// Numbers before texts: an identifier may be either.
bool isLess(const FieldValue& left, const FieldValue& right) {
    const auto* leftNumber = std::get_if<RKTNumber>(&left);
    const auto* rightNumber = std::get_if<RKTNumber>(&right);
    if (leftNumber != nullptr && rightNumber != nullptr) return isLess(*leftNumber, *rightNumber);
    if (leftNumber != nullptr || rightNumber != nullptr) return leftNumber != nullptr;
    return std::get<std::string>(left) < std::get<std::string>(right);
}

FieldValue keyOf(const RepositoryField& field, const RKTServiceRepository& repository) {
    FieldValue value = field.value(repository);
    if (auto* text = std::get_if<std::string>(&value)) *text = folded(std::move(*text));
    return value;
}

}  // namespace

void sortRepositories(RKTServiceArrayResult::Results& repositories, const RepositoryField& field,
                      bool descending) {
    std::vector<Entry> entries;
    entries.reserve(repositories.size());
    for (auto& repository : repositories) {
        FieldValue key = keyOf(field, *repository);
        entries.push_back({std::move(key), entries.size(), std::move(repository)});
    }
    std::ranges::sort(entries, [descending](const Entry& left, const Entry& right) {
        const bool leftIsSet = !std::holds_alternative<std::monostate>(left.key);
        const bool rightIsSet = !std::holds_alternative<std::monostate>(right.key);
        if (leftIsSet != rightIsSet) return leftIsSet;
        if (leftIsSet && isLess(left.key, right.key)) return !descending;
        if (leftIsSet && isLess(right.key, left.key)) return descending;
        return left.place < right.place;
    });
    std::ranges::transform(entries, repositories.begin(),
                           [](Entry& entry) { return std::move(entry.repository); });
}

}  // namespace korvogit
