#pragma once

#include <KorvoGitService/RKTServiceRequest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

namespace korvogit {

/// A walk over all pages of a listing: what to ask for next, what of an answer is new, and where
/// the list ends. How a service tells the end is in docs/services.md.
class PageWalk {
public:
    using Results = RKTServiceArrayResult::Results;

    /// @param request what to list. Its page does not count; without a number of repositories on a
    ///                page the pages are as long as the service makes them
    PageWalk(std::string_view serviceType, std::shared_ptr<const RKTRepositoriesRequest> request);

    std::shared_ptr<const RKTRepositoriesRequest> nextRequest() const;
    /// Takes the answer to nextRequest(), and gives the repositories that no earlier page had.
    Results take(const RKTServiceArrayResult& page);

    bool isOver() const { return end_ != End::NotYet; }
    /// True when it is over because pages brought nothing new though the service tells of more.
    bool endsInRepetition() const { return end_ == End::Repetition; }
    /// The same, where all these pages were empty: what follows them, if anything, is missing.
    bool endsInEmptyPages() const { return end_ == End::EmptyPages; }
    /// How many pages came, up to the last one that brought anything.
    std::int64_t pages() const { return pages_; }
    /// As far as is known: 0 when it is not.
    std::int64_t totalNumberOfPages() const;
    std::size_t repositories() const { return repositories_; }

private:
    /// How a service tells that there is no further page.
    enum class Sign { NoNextLink, EmptyPage };
    enum class End { NotYet, LastPage, Repetition, EmptyPages };

    RKTNumber nextPage() const;
    bool isNew(const RKTServiceRepository& repository);
    bool isLastPage(const RKTServiceArrayResult& page) const;
    End endAfter(const RKTServiceArrayResult& page) const;

    std::shared_ptr<const RKTRepositoriesRequest> request_;
    bool startsAtRepositories_;  // see nextPage()
    RKTNumber countPerPage_;
    Sign sign_;
    std::unordered_set<std::string> seen_;
    std::int64_t asked_ = 0;  // pages
    std::int64_t pages_ = 0;
    std::int64_t total_ = 0;
    std::size_t received_ = 0;
    std::size_t repositories_ = 0;
    int barrenPages_ = 0;  // without anything new, one after another
    int emptyPages_ = 0;   // one after another
    End end_ = End::NotYet;
};

}  // namespace korvogit
