#pragma once

#include <KorvoGitService/RKTServiceRequest.h>

#include <memory>
#include <optional>
#include <string>

#include "Format.h"
#include "PropertyOptions.h"

namespace korvogit {

/// What is known when nothing more comes.
struct ListingEnd {
    std::optional<RKTError> error{};
    std::optional<RKTServiceResult::LinkRelations> linkRelations{};
    std::optional<RKTNumber> page{};
    std::optional<RKTNumber> totalNumberOfPages{};
    bool hasResults = true;       ///< false: not even an empty list came
    std::string lineForPeople{};  ///< to stand below a table
};

/// Where listed repositories go: a class for each format.
class ListingOutput {
public:
    using Results = RKTServiceArrayResult::Results;

    ListingOutput() = default;
    virtual ~ListingOutput() = default;
    ListingOutput(const ListingOutput&) = delete;
    ListingOutput& operator=(const ListingOutput&) = delete;

    /// Some more; a format that can prints them at once.
    virtual void add(const Results& repositories) = 0;
    /// Once, after everything was added.
    virtual void end(const ListingEnd& end) = 0;
};

/// @param descending for the property to sort by, if there is one
std::unique_ptr<ListingOutput> makeListingOutput(Format format, const PropertyOptions& properties,
                                                 bool descending, const std::string& serviceName);

}  // namespace korvogit
