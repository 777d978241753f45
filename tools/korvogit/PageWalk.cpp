#include "PageWalk.h"

#include <KorvoGitService/KorvoGitServiceBase.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "Json.h"

namespace korvogit {

namespace {

bool pagesByLinks(std::string_view serviceType) {
    const std::array<std::string_view, 4> types = {
        RKTServiceTypeGitHub, RKTServiceTypeGitHubEnterprise, RKTServiceTypeGitLab,
        RKTServiceTypeGitLabSelfHosted};
    return std::ranges::find(types, serviceType) != types.end();
}

/// Others may stand in the same header, such as those of a gateway's style sheet.
bool tellOfPages(const RKTServiceArrayResult::LinkRelations& links) {
    const std::array<std::string_view, 4> names = {
        RKTServiceLinkRelationFirst, RKTServiceLinkRelationPrevious, RKTServiceLinkRelationNext,
        RKTServiceLinkRelationLast};
    return std::ranges::any_of(names, [&](std::string_view name) { return links.contains(name); });
}

/// The longest pages that are to be had: the fewest requests.
RKTNumber longestPage(std::string_view serviceType) {
    return serviceType == RKTServiceTypeBitbucketServer ? 1000 : 100;
}

/// A Bitbucket Server counts repositories that the account may not see among those to skip, and
/// gives what follows them: pages repeat until as many came.
constexpr int mostRepetitions = 20;

std::int64_t integerIn(const std::optional<RKTNumber>& number) {
    return number ? number->integerValue() : 0;
}

}  // namespace

PageWalk::PageWalk(std::string_view serviceType,
                   std::shared_ptr<const RKTRepositoriesRequest> request)
    : request_(std::move(request)),
      startsAtRepositories_(serviceType == RKTServiceTypeBitbucketServer),
      countPerPage_(request_->countPerPage().value_or(longestPage(serviceType))),
      end_(pagesByLinks(serviceType) ? End::NoNextLink : End::EmptyPage) {}

std::shared_ptr<const RKTRepositoriesRequest> PageWalk::nextRequest() const {
    auto next = std::make_shared<RKTRepositoriesRequest>();
    next->setSortKey(request_->sortKey());
    next->setSortDirection(request_->sortDirection());
    next->setState(request_->state());
    next->setVisibility(request_->visibility());
    next->setCountPerPage(countPerPage_);
    next->setPage(nextPage());
    return next;
}

RKTNumber PageWalk::nextPage() const {
    if (!startsAtRepositories_) return pages_ + 1;
    // Bitbucket Server skips (page - 1) / countPerPage repositories: this page skips those that
    // came, however few the server puts on a page.
    return static_cast<std::int64_t>(received_) * countPerPage_.integerValue() + 1;
}

PageWalk::Results PageWalk::take(const RKTServiceArrayResult& page) {
    const Results all = page.results().value_or(Results());
    Results fresh;
    for (const auto& repository : all) {
        if (isNew(*repository)) fresh.push_back(repository);
    }
    received_ += all.size();
    repositories_ += fresh.size();
    repetitions_ = fresh.empty() && !all.empty() ? repetitions_ + 1 : 0;
    endsInRepetition_ = repetitions_ > (startsAtRepositories_ ? mostRepetitions : 0);
    if (!fresh.empty() || pages_ == 0) ++pages_;
    // The last page does not tell it any more.
    if (const auto told = integerIn(page.totalNumberOfPages()); told > 0) total_ = told;
    isOver_ = all.empty() || endsInRepetition_ || !tellsOfNextPage(page);
    return fresh;
}

std::int64_t PageWalk::totalNumberOfPages() const {
    return isOver_ && !endsInRepetition_ ? pages_ : total_;
}

/// By what the service calls it, or else by all that it says about it.
bool PageWalk::isNew(const RKTServiceRepository& repository) {
    const auto identifier = repository.identifier();
    if (!identifier) return seen_.insert(jsonLine(toJson(repository))).second;
    const auto number = identifier->numberValue();
    return seen_.insert(number ? jsonLine(toJson(*number)) : identifier->stringValue().value_or(""))
        .second;
}

bool PageWalk::tellsOfNextPage(const RKTServiceArrayResult& page) const {
    const auto relations = page.linkRelations();
    if (relations && relations->contains(RKTServiceLinkRelationNext)) return true;
    if (relations && !tellOfPages(*relations)) return true;  // nothing is told
    return pages_ < integerIn(page.totalNumberOfPages()) || end_ == End::EmptyPage;
}

}  // namespace korvogit
