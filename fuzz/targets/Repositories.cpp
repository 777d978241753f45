// JSON, and pages of repositories. The input's first byte says whose page, the second how many
// repositories were asked for; the rest is the page.

#include "KorvoGitService/RKTBitbucketServerService.h"
#include "KorvoGitService/RKTBitbucketService.h"
#include "KorvoGitService/RKTGitHubService.h"
#include "KorvoGitService/RKTGitLabService.h"
#include "fuzz/common/PlainJSON.h"
#include "fuzz/common/Properties.h"
#include "fuzz/common/Target.h"

namespace {

using fuzz::require;
using fuzz::plain::JSON;
using Request = std::shared_ptr<const RKTRepositoriesRequest>;
using Result = std::shared_ptr<RKTServiceArrayResult>;

/// Shows how an adapter reads pages.
template <class Adapter>
class Reading : public Adapter {
public:
    using Adapter::Adapter;

    static Result read(const RKTJSONValue& page, const Request& request) {
        static const auto& service = *new std::shared_ptr(RKTService::make<Reading>(nullptr));
        auto result = RKTServiceArrayResult::resultWithHTTPURLResponse(nullptr);
        service->listing(request).read(page, *result);
        return result;
    }

private:
    auto listing(const Request& request) const { return Adapter::listingForRequest(request); }
};

struct Reader {
    Result (*read)(const RKTJSONValue& page, const Request& request);
    fuzz::Properties (*expected)(const JSON& element);
    bool listsAnArray;
    bool isPagedByLinks;
};

const Reader readers[] = {
    {&Reading<RKTGitHubService>::read, &fuzz::expectedOfGitHub, true, true},
    {&Reading<RKTGitLabService>::read, &fuzz::expectedOfGitLab, true, true},
    {&Reading<RKTBitbucketService>::read, &fuzz::expectedOfBitbucket, false, true},
    {&Reading<RKTBitbucketServerService>::read, &fuzz::expectedOfBitbucketServer, false, false},
};

/// The page's elements; nothing when it is not the page of such a service.
std::optional<JSON::Elements> elementsOf(const JSON& page, bool listsAnArray) {
    if (listsAnArray) {
        const auto* elements = page.as<JSON::Elements>();
        return elements ? std::optional(*elements) : std::nullopt;
    }
    if (!page.as<JSON::Members>()) return std::nullopt;
    return page.get<JSON::Elements>("values").value_or(JSON::Elements());
}

void checkPaging(const Reader& reader, const JSON& page, const RKTServiceArrayResult& result,
                 std::uint64_t count) {
    if (reader.isPagedByLinks) {
        require(result.page() == RKTNumber(3) && result.totalNumberOfPages() == RKTNumber(0),
                "the page that was asked for");
        return;
    }
    const auto start = page.get<RKTNumber>("start").value_or(RKTNumber(0)).unsignedIntegerValue();
    const auto expected = count == 0 ? std::nullopt : std::optional(RKTNumber(start / count + 1));
    require(result.page() == expected && !result.totalNumberOfPages(), "the page by the start");
}

void checkRecords(const Reader& reader, const JSON::Elements& elements,
                  const RKTServiceArrayResult::Results& records) {
    std::size_t index = 0;
    for (const auto& element : elements) {
        if (!element.as<JSON::Members>()) continue;
        require(index < records.size(), "a record for each dictionary");
        require(fuzz::propertiesOf(*records[index++]) == reader.expected(element),
                "a record by the table");
    }
    require(index == records.size(), "no record of anything else");
}

}  // namespace

FUZZ_TARGET(Repositories) {
    const auto& reader = readers[fuzz::takeByte(input) % std::size(readers)];
    const std::uint64_t count = fuzz::takeByte(input) % 10;
    const auto read = fuzz::readJSONBothWays(input);
    if (!read.document) return;

    const auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setPage(RKTNumber(3));
    request->setCountPerPage(RKTNumber(count));
    const auto result = reader.read(read.document->root(), request);
    const auto elements = elementsOf(*read.expected, reader.listsAnArray);
    require(result->results().has_value() == elements.has_value(), "results of a page");
    require(!result->error(), "no error");
    if (!elements) {
        require(!result->page() && !result->totalNumberOfPages(), "nothing of what is no page");
        return;
    }
    checkRecords(reader, *elements, *result->results());
    checkPaging(reader, *read.expected, *result, count);
}
