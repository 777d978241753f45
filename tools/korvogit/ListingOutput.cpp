#include "ListingOutput.h"

#include <unistd.h>

#include <utility>

#include "Csv.h"
#include "ErrorReport.h"
#include "Json.h"
#include "RepositoriesTable.h"
#include "RepositorySorting.h"
#include "StandardStreams.h"
#include "Terminal.h"

namespace korvogit {

namespace {

void append(ListingOutput::Results& all, const ListingOutput::Results& more) {
    all.insert(all.end(), more.begin(), more.end());
}

class TableOutput : public ListingOutput {
public:
    TableOutput(std::vector<RepositoryField> columns, std::string serviceName)
        : columns_(std::move(columns)), serviceName_(std::move(serviceName)) {}

    void add(const Results& repositories) override { append(all_, repositories); }

    /// What came before an error is shown too.
    void end(const ListingEnd& end) override {
        const Terminal terminal = Terminal::of(STDOUT_FILENO);
        if (!end.error || !all_.empty()) {
            writeOutput(repositoriesTable(all_, columns_, terminal) +
                        terminal.styled(end.lineForPeople, Style::Faint) + "\n");
        }
        if (end.error) report(*end.error, serviceName_);
    }

private:
    std::vector<RepositoryField> columns_;
    std::string serviceName_;
    Results all_;
};

class JsonOutput : public ListingOutput {
public:
    void add(const Results& repositories) override { append(all_, repositories); }

    void end(const ListingEnd& end) override {
        writeOutput(jsonText(Json::object({
            {"error", toJson(end.error)},
            {"linkRelations", toJson(end.linkRelations)},
            {"page", toJson(end.page)},
            {"totalNumberOfPages", toJson(end.totalNumberOfPages)},
            {"results", end.hasResults ? toJson(all_) : Json()},
        })));
    }

private:
    Results all_;
};

class JsonLinesOutput : public ListingOutput {
public:
    void add(const Results& repositories) override {
        std::string lines;
        for (const auto& repository : repositories) lines += jsonLine(toJson(*repository));
        writeOutput(lines);
    }

    void end(const ListingEnd& end) override {
        if (end.error) writeOutput(jsonLine(Json::object({{"error", toJson(end.error)}})));
    }
};

class CsvOutput : public ListingOutput {
public:
    CsvOutput(std::vector<RepositoryField> columns, std::string serviceName)
        : columns_(std::move(columns)), serviceName_(std::move(serviceName)) {}

    void add(const Results& repositories) override {
        const bool forTerminal = Terminal::of(STDOUT_FILENO).isTerminal;
        writeOutput(header() + csvLines(repositories, columns_, forTerminal));
    }

    void end(const ListingEnd& end) override {
        if (end.error) return report(*end.error, serviceName_);
        writeOutput(header());
    }

private:
    /// Once.
    std::string header() { return std::exchange(hasHeader_, true) ? "" : csvHeader(columns_); }

    std::vector<RepositoryField> columns_;
    std::string serviceName_;
    bool hasHeader_ = false;
};

/// Sorts, which takes all of them, and then hands them on.
class SortedOutput : public ListingOutput {
public:
    SortedOutput(RepositoryField field, bool descending, std::unique_ptr<ListingOutput> next)
        : field_(field), descending_(descending), next_(std::move(next)) {}

    void add(const Results& repositories) override { append(all_, repositories); }

    void end(const ListingEnd& end) override {
        sortRepositories(all_, field_, descending_);
        if (!all_.empty()) next_->add(all_);
        next_->end(end);
    }

private:
    RepositoryField field_;
    bool descending_;
    std::unique_ptr<ListingOutput> next_;
    Results all_;
};

std::unique_ptr<ListingOutput> makeUnsorted(Format format, std::vector<RepositoryField> columns,
                                            const std::string& serviceName) {
    switch (format) {
        case Format::Json:
            return std::make_unique<JsonOutput>();
        case Format::JsonLines:
            return std::make_unique<JsonLinesOutput>();
        case Format::Csv:
            if (columns.empty())
                columns.assign(repositoryFields().begin(), repositoryFields().end());
            return std::make_unique<CsvOutput>(std::move(columns), serviceName);
        case Format::Table:
            break;
    }
    return std::make_unique<TableOutput>(std::move(columns), serviceName);
}

}  // namespace

std::unique_ptr<ListingOutput> makeListingOutput(Format format, const PropertyOptions& properties,
                                                 bool descending, const std::string& serviceName) {
    auto output = makeUnsorted(format, properties.columns(), serviceName);
    const auto& field = properties.sortBy();
    if (!field) return output;
    return std::make_unique<SortedOutput>(*field, descending, std::move(output));
}

}  // namespace korvogit
