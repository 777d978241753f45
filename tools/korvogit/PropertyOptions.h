#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <vector>

#include "RepositoryFields.h"

namespace korvogit {

/// Which properties of the repositories to print, and by which to sort them here.
class PropertyOptions {
public:
    explicit PropertyOptions(CLI::App& command);
    PropertyOptions(const PropertyOptions&) = delete;
    PropertyOptions& operator=(const PropertyOptions&) = delete;

    /// Empty: the format's own choice.
    const std::vector<RepositoryField>& columns() const { return columns_; }
    const std::optional<RepositoryField>& sortBy() const { return sortBy_; }

private:
    std::vector<RepositoryField> columns_;
    std::optional<RepositoryField> sortBy_;
};

}  // namespace korvogit
