#include "RepositoriesTable.h"

#include <optional>
#include <utility>
#include <vector>

#include "Table.h"

namespace korvogit {

namespace {

using Cell = Table::Cell;
using Results = RKTServiceArrayResult::Results;

Cell numberCell(const std::optional<RKTNumber>& number) {
    return {number ? number->stringValue() : ""};
}

Cell visibilityCell(const std::optional<std::string>& visibility) {
    const std::string text = visibility.value_or("");
    const bool isPublic = text == RKTServiceRepositoryVisibilityPublic;
    return {text, isPublic || text.empty() ? Style::Plain : Style::Notable};
}

Cell stateCell(const std::optional<std::string>& state) {
    const std::string text = state.value_or("");
    return {text, text == RKTServiceRepositoryStateClosed ? Style::Faint : Style::Plain};
}

/// A service may not tell the full name.
std::string nameOf(const RKTServiceRepository& repository) {
    const auto fullName = repository.fullName();
    return fullName ? *fullName : repository.name().value_or("");
}

Table usualTable(const Results& repositories) {
    constexpr auto right = Table::Alignment::Right;
    Table table({{"NAME"},
                 {"VISIBILITY"},
                 {"STATE"},
                 {"STARS", right},
                 {"FORKS", right},
                 {"BRANCH"},
                 {"DESCRIPTION"}});
    for (const auto& repository : repositories) {
        table.addRow({{nameOf(*repository)},
                      visibilityCell(repository->visibility()),
                      stateCell(repository->state()),
                      numberCell(repository->numberOfStars()),
                      numberCell(repository->numberOfForks()),
                      {repository->defaultBranchName().value_or("")},
                      {repository->descriptiveText().value_or("")}});
    }
    return table;
}

Cell cellFor(const RepositoryField& column, const RKTServiceRepository& repository) {
    if (column.name == "visibility") return visibilityCell(repository.visibility());
    if (column.name == "state") return stateCell(repository.state());
    return {fieldText(column.value(repository))};
}

Table chosenTable(const Results& repositories, std::span<const RepositoryField> columns) {
    std::vector<Table::Column> titles;
    for (const auto& column : columns) {
        const bool counts = column.name.starts_with("numberOf");
        titles.push_back(
            {std::string(column.name), counts ? Table::Alignment::Right : Table::Alignment::Left});
    }
    Table table(std::move(titles));
    for (const auto& repository : repositories) {
        std::vector<Cell> row;
        row.reserve(columns.size());
        for (const auto& column : columns) row.push_back(cellFor(column, *repository));
        table.addRow(std::move(row));
    }
    return table;
}

std::int64_t numberOf(const RKTServiceArrayResult& page) {
    return page.page() ? page.page()->integerValue() : 1;
}

/// 0 when the service does not tell.
std::int64_t totalOf(const RKTServiceArrayResult& page) {
    return page.totalNumberOfPages() ? page.totalNumberOfPages()->integerValue() : 0;
}

}  // namespace

std::string repositoriesTable(const Results& repositories, std::span<const RepositoryField> columns,
                              const Terminal& terminal) {
    if (repositories.empty()) return "No repositories here.\n";
    const Table table =
        columns.empty() ? usualTable(repositories) : chosenTable(repositories, columns);
    return table.text(terminal) + "\n";
}

std::string pageLine(const RKTServiceArrayResult& result) {
    const auto total = totalOf(result);
    return "Page " + std::to_string(numberOf(result)) +
           (total > 0 ? " of " + std::to_string(total) : "");
}

std::string pageLineWithOption(const RKTServiceArrayResult& result) {
    const auto page = numberOf(result);
    const auto relations = result.linkRelations();
    const bool hasNext =
        page < totalOf(result) || (relations && relations->contains(RKTServiceLinkRelationNext));
    const bool canBeAskedFor = hasNext && page >= 1 && page < INT64_MAX;
    return pageLine(result) +
           (canBeAskedFor ? "; the next one: --page " + std::to_string(page + 1) : "");
}

std::string countLine(std::size_t repositories) {
    return std::to_string(repositories) + (repositories == 1 ? " repository" : " repositories");
}

std::string pageTable(const RKTServiceArrayResult& page, const Terminal& terminal) {
    return repositoriesTable(page.results().value_or(Results()), {}, terminal) +
           terminal.styled(pageLine(page), Style::Faint) + "\n";
}

}  // namespace korvogit
