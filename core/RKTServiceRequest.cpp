#include "KorvoGitService/RKTServiceRequest.h"

#include "core/LinkHeader.h"

const char* const RKTServiceLinkRelationFirst = "first";
const char* const RKTServiceLinkRelationPrevious = "prev";
const char* const RKTServiceLinkRelationNext = "next";
const char* const RKTServiceLinkRelationLast = "last";

namespace {

template <class Result>
std::shared_ptr<Result> resultOfClass(const RKTHTTPURLResponse* response) {
    auto result = std::make_shared<Result>();
    const auto header = response ? response->valueForHTTPHeaderField("Link") : std::nullopt;
    if (header) result->setLinkRelations(rkt::linkRelationsInHeader(*header));
    return result;
}

}  // namespace

RKTServiceRequest::~RKTServiceRequest() = default;
RKTRepositoriesRequest::~RKTRepositoriesRequest() = default;
RKTServiceResult::~RKTServiceResult() = default;
RKTServiceObjectResult::~RKTServiceObjectResult() = default;
RKTServiceArrayResult::~RKTServiceArrayResult() = default;

std::shared_ptr<RKTServiceResult> RKTServiceResult::resultWithHTTPURLResponse(
    const RKTHTTPURLResponse* response) {
    return resultOfClass<RKTServiceResult>(response);
}

std::shared_ptr<RKTServiceObjectResult> RKTServiceObjectResult::resultWithHTTPURLResponse(
    const RKTHTTPURLResponse* response) {
    return resultOfClass<RKTServiceObjectResult>(response);
}

std::shared_ptr<RKTServiceArrayResult> RKTServiceArrayResult::resultWithHTTPURLResponse(
    const RKTHTTPURLResponse* response) {
    return resultOfClass<RKTServiceArrayResult>(response);
}
