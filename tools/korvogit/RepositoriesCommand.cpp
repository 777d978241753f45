#include <cstdint>
#include <memory>

#include "Asking.h"
#include "Command.h"
#include "ErrorReport.h"
#include "ExitStatus.h"
#include "Format.h"
#include "ListingOutput.h"
#include "PageWalk.h"
#include "Progress.h"
#include "PropertyOptions.h"
#include "RepositoriesTable.h"
#include "RequestOptions.h"
#include "StandardStreams.h"

namespace korvogit {

namespace {

using Page = std::shared_ptr<RKTServiceArrayResult>;

struct RepositoriesOptions {
    explicit RepositoriesOptions(CLI::App& command);
    void check() const;

    AccountOptions account;
    NetworkOptions network;
    RequestOptions request;
    PropertyOptions properties;
    Format format;
    bool all = false;
};

RepositoriesOptions::RepositoriesOptions(CLI::App& command)
    : account(command), network(command), request(command), properties(command) {
    command.add_flag("--all", all, "List all pages, not one")
        ->group("Selection")
        ->disable_flag_override();
    addFormatOption(command, format, {Format::Table, Format::Json, Format::Csv, Format::JsonLines});
}

void RepositoriesOptions::check() const {
    const auto& asked = *request.request();
    if (all && asked.page()) throw CLI::ExcludesError("--all", "--page");
    // Where pages are counted in repositories, what came times the length must not overflow.
    constexpr std::int64_t longestPage = 1'000'000;
    const auto length = asked.countPerPage() ? asked.countPerPage()->integerValue() : 1;
    if (all && (length <= 0 || length > longestPage)) {
        throw CLI::ValidationError("--per-page", "must be from 1 to 1000000 for --all");
    }
    if (!properties.columns().empty() && format != Format::Table && format != Format::Csv) {
        throw CLI::ValidationError(
            "--columns", "is for table and csv; an object of JSON always has all properties");
    }
}

/// One run of the command.
class Listing {
public:
    explicit Listing(const RepositoriesOptions& options);
    int run() { return options_.all ? listAll() : listPage(); }

private:
    Answer<Page> ask(std::shared_ptr<const RKTRepositoriesRequest> request, Spinner& spinner);
    RKTError errorForEmptyPages() const;
    void complainAboutRepetition(const PageWalk& walk) const;
    int listPage();
    int listAll();

    const RepositoriesOptions& options_;
    const std::string service_;
    const std::shared_ptr<RKTServiceCredentials> credentials_;
    const std::unique_ptr<ListingOutput> output_;
    Conversation conversation_;
};

Listing::Listing(const RepositoriesOptions& options)
    : options_(options),
      service_(options.account.serviceName()),
      credentials_(options.account.credentials()),
      output_(makeListingOutput(
          options.format, options.properties,
          options.request.request()->sortDirection() == RKTServiceSortDirectionDescending,
          service_)),
      conversation_(credentials_, service_) {}

Answer<Page> Listing::ask(std::shared_ptr<const RKTRepositoriesRequest> request, Spinner& spinner) {
    return conversation_.ask<Page>(
        [&request](RKTService& service, auto handler) {
            return service.fetchRepositoriesWithRequest(std::move(request), std::move(handler));
        },
        spinner);
}

RKTError Listing::errorForEmptyPages() const {
    return errorForUselessAnswer(service_ +
                                 " gave one empty page after another, each with a link to a next "
                                 "one: the list ends here, and may lack repositories.");
}

void Listing::complainAboutRepetition(const PageWalk& walk) const {
    complain(service_ + " repeats itself: what follows page " + std::to_string(walk.pages()) +
                 " is empty or was listed before.",
             {"Neither the credentials nor the network are the reason. The list ends here, each "
              "repository once; if some are missing, try another --per-page."});
}

int Listing::listPage() {
    Spinner spinner("Asking " + service_, options_.format == Format::Table);
    const auto [page, signal] = ask(options_.request.request(), spinner);
    spinner.stop();
    const auto error = errorOfListing(*page, service_);
    if (page->results()) output_->add(*page->results());
    output_->end({.error = error,
                  .linkRelations = page->linkRelations(),
                  .page = page->page(),
                  .totalNumberOfPages = page->totalNumberOfPages(),
                  .hasResults = page->results().has_value(),
                  .lineForPeople = pageLineWithOption(*page)});
    return exitStatus(error, signal);
}

int Listing::listAll() {
    PageWalk walk(credentials_->serviceType().value_or(""), options_.request.request());
    Progress progress(service_);
    ListingEnd end{.hasResults = false};
    // So that what came is printed, with the error, also when a signal comes between two questions:
    // it cancels the next one then.
    const FirstSignalKept kept;
    while (!walk.isOver() && !end.error) {
        const auto answer = ask(walk.nextRequest(), progress.spinner());
        const auto& page = *answer.value;
        end.error = errorOfListing(page, service_);
        if (end.error) break;
        const auto repositories = walk.take(page);
        progress.spinner().hide();
        end.hasResults = true;
        if (!repositories.empty()) output_->add(repositories);
        if (walk.endsInEmptyPages()) end.error = errorForEmptyPages();
        if (!walk.isOver()) progress.show(walk);
    }
    progress.spinner().stop();
    if (end.hasResults) end.page = walk.pages();
    if (const auto total = walk.totalNumberOfPages(); total > 0) end.totalNumberOfPages = total;
    end.lineForPeople = countLine(walk.repositories());
    output_->end(end);
    if (walk.endsInRepetition()) complainAboutRepetition(walk);
    return exitStatus(end.error, signalThatCame());
}

}  // namespace

void addRepositoriesCommand(CLI::App& program, Action& chosen) {
    CLI::App& command = *program.add_subcommand(
        "repositories", "List one page of the account's repositories, or all");
    const auto options = std::make_shared<RepositoriesOptions>(command);
    command.footer(
        "Examples:\n"
        "  KORVOGIT_TOKEN=... korvogit repositories --service GitHub --user octocat \\\n"
        "      --sort updated --direction descending\n"
        "  KORVOGIT_TOKEN=... korvogit repositories --service GitHub --user octocat --all \\\n"
        "      --columns fullName,numberOfStars --sort-by numberOfStars --direction descending\n"
        "  KORVOGIT_TOKEN=... korvogit repositories --service GitHub --user octocat --all \\\n"
        "      --format jsonl | jq -r '.HTTPSRepositoryURL // empty'");
    command.callback([&chosen, options] {
        options->check();
        chosen = [options] {
            options->network.apply();
            return Listing(*options).run();
        };
    });
}

}  // namespace korvogit
