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

/// How many pages in a row may bring nothing new. A Bitbucket Server counts repositories that the
/// account may not see among those to skip, and gives what follows them: pages repeat until as many
/// came. Services that page by links may leave out what the account may not see: pages are empty.
constexpr int mostBarrenPages = 20;

std::int64_t integerIn(const std::optional<RKTNumber>& number) {
    return number ? number->integerValue() : 0;
}

}  // namespace

PageWalk::PageWalk(std::string_view serviceType,
                   std::shared_ptr<const RKTRepositoriesRequest> request)
    : request_(std::move(request)),
      startsAtRepositories_(serviceType == RKTServiceTypeBitbucketServer),
      countPerPage_(request_->countPerPage().value_or(longestPage(serviceType))),
      sign_(pagesByLinks(serviceType) ? Sign::NoNextLink : Sign::EmptyPage) {}

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
    if (!startsAtRepositories_) return asked_ + 1;
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
    barrenPages_ = fresh.empty() ? barrenPages_ + 1 : 0;
    emptyPages_ = all.empty() ? emptyPages_ + 1 : 0;
    if (++asked_ == 1 || !fresh.empty()) pages_ = asked_;
    // The last page does not tell it any more.
    if (const auto told = integerIn(page.totalNumberOfPages()); told > 0) total_ = told;
    end_ = endAfter(page);
    return fresh;
}

std::int64_t PageWalk::totalNumberOfPages() const {
    return end_ == End::LastPage ? pages_ : total_;
}

/// By what the service calls it, or else by all that it says about it.
bool PageWalk::isNew(const RKTServiceRepository& repository) {
    const auto identifier = repository.identifier();
    const auto number = identifier ? identifier->numberValue() : std::nullopt;
    if (number) return seen_.insert(jsonLine(toJson(*number))).second;
    const auto text = identifier ? identifier->stringValue().value_or("") : "";
    return seen_.insert(text.empty() ? jsonLine(toJson(repository)) : text).second;
}

bool PageWalk::isLastPage(const RKTServiceArrayResult& page) const {
    const auto relations = page.linkRelations().value_or(RKTServiceArrayResult::LinkRelations());
    if (relations.contains(RKTServiceLinkRelationNext)) return false;
    if (page.results().value_or(Results()).empty()) return true;
    if (tellOfPages(relations)) return asked_ >= integerIn(page.totalNumberOfPages());
    // Nothing is told: there is one page, unless an earlier one told of more, or a gateway's links
    // stand in place of the service's.
    return sign_ == Sign::NoNextLink && relations.empty() && asked_ >= total_;
}

PageWalk::End PageWalk::endAfter(const RKTServiceArrayResult& page) const {
    if (isLastPage(page)) return End::LastPage;
    if (barrenPages_ <= mostBarrenPages) return End::NotYet;
    return emptyPages_ > mostBarrenPages ? End::EmptyPages : End::Repetition;
}

}  // namespace korvogit
