// What to list, and what came of it.

#ifndef KORVOGITSERVICE_RKTSERVICEREQUEST_H
#define KORVOGITSERVICE_RKTSERVICEREQUEST_H

#include <any>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTHTTPURLResponse.h"
#include "KorvoGitService/RKTNumber.h"
#include "KorvoGitService/RKTRecord.h"
#include "KorvoGitService/RKTServiceRepository.h"
#include "KorvoGitService/RKTURL.h"

/// What to sort by. A service that cannot sort by a key, or does not know the value, sorts by its
/// default.
enum RKTServiceSortKey : std::uint64_t {
    RKTServiceSortKeyDefault = 0,       ///< in the order that the service chooses
    RKTServiceSortKeyIdentifier = 1,    ///< GitLab alone
    RKTServiceSortKeyName = 2,          ///< GitHub: by full name
    RKTServiceSortKeyCreated = 3,       ///< date of creation
    RKTServiceSortKeyUpdated = 4,       ///< date of the last change of the record
    RKTServiceSortKeyLastActivity = 5,  ///< date of the last push, or what comes near
};

/// Unknown values count as the service's default.
enum RKTServiceSortDirection : std::uint64_t {
    RKTServiceSortDirectionDefault = 0,     ///< the service's own
    RKTServiceSortDirectionAscending = 1,   ///< A to Z, oldest first
    RKTServiceSortDirectionDescending = 2,  ///< Z to A, newest first
};

/// How to sort, and which page of how many.
class RKT_EXPORT RKTServiceRequest : public RKTRecord {
public:
    RKTServiceRequest() = default;
    virtual ~RKTServiceRequest();

    /// Default: the service's own order.
    RKTServiceSortKey sortKey() const { return get(sortKey_); }
    void setSortKey(RKTServiceSortKey value) { set(sortKey_, value); }

    /// Default: the service's own for that key.
    RKTServiceSortDirection sortDirection() const { return get(sortDirection_); }
    void setSortDirection(RKTServiceSortDirection value) { set(sortDirection_, value); }

    /// Counted from 1; nothing means the first.
    std::optional<RKTNumber> page() const { return get(page_); }
    void setPage(std::optional<RKTNumber> value) { set(page_, value); }

    /// Nothing means the service's default; a service may cap it.
    std::optional<RKTNumber> countPerPage() const { return get(countPerPage_); }
    void setCountPerPage(std::optional<RKTNumber> value) { set(countPerPage_, value); }

private:
    RKTServiceSortKey sortKey_ = RKTServiceSortKeyDefault;
    RKTServiceSortDirection sortDirection_ = RKTServiceSortDirectionDefault;
    std::optional<RKTNumber> page_;
    std::optional<RKTNumber> countPerPage_;
};

/// Which repositories to list. A service that knows no such filter ignores it (docs/services.md).
class RKT_EXPORT RKTRepositoriesRequest : public RKTServiceRequest {
public:
    ~RKTRepositoriesRequest() override;

    /// A repository state, or nothing for any.
    std::optional<std::string> state() const { return get(state_); }
    void setState(std::optional<std::string> value) { set(state_, std::move(value)); }

    /// A repository visibility, or nothing for any.
    std::optional<std::string> visibility() const { return get(visibility_); }
    void setVisibility(std::optional<std::string> value) { set(visibility_, std::move(value)); }

private:
    std::optional<std::string> state_;
    std::optional<std::string> visibility_;
};

/// Names of link relations (IANA Link Relations registry) that paging uses.
RKT_EXPORT extern const char* const RKTServiceLinkRelationFirst;     ///< "first"
RKT_EXPORT extern const char* const RKTServiceLinkRelationPrevious;  ///< "prev"
RKT_EXPORT extern const char* const RKTServiceLinkRelationNext;      ///< "next"
RKT_EXPORT extern const char* const RKTServiceLinkRelationLast;      ///< "last"

/// What came of a request.
class RKT_EXPORT RKTServiceResult : public RKTRecord {
public:
    /// Relation name to target.
    using LinkRelations = std::map<std::string, RKTURL, std::less<>>;

    RKTServiceResult() = default;
    virtual ~RKTServiceResult();

    /// `resultWithHTTPURLResponse:`: a new result with the link relations of the response's "Link"
    /// header (RFC 8288), and nothing else: neither the status nor a missing response is an error
    /// here. Sent to a subclass it gives an object of that subclass. A header that is malformed
    /// gives the relations before the mistake; only a link whose first parameter is "rel" is read.
    /// The first 1,000 links are read, more are not.
    static std::shared_ptr<RKTServiceResult> resultWithHTTPURLResponse(
        const RKTHTTPURLResponse* response);

    /// Nothing on success.
    std::optional<RKTError> error() const { return get(error_); }
    void setError(std::optional<RKTError> value) { set(error_, std::move(value)); }

    /// Relation name to target. Nothing when the response had no "Link" header; empty when it had
    /// nothing readable. A next page exists when there is RKTServiceLinkRelationNext. Targets come
    /// from the service: a credential must not be sent to one of another origin.
    std::optional<LinkRelations> linkRelations() const { return get(linkRelations_); }
    void setLinkRelations(std::optional<LinkRelations> value) {
        set(linkRelations_, std::move(value));
    }

private:
    std::optional<RKTError> error_;
    std::optional<LinkRelations> linkRelations_;
};

/// A result of one object.
class RKT_EXPORT RKTServiceObjectResult : public RKTServiceResult {
public:
    ~RKTServiceObjectResult() override;
    /// As RKTServiceResult's, for this class.
    static std::shared_ptr<RKTServiceObjectResult> resultWithHTTPURLResponse(
        const RKTHTTPURLResponse* response);

    /// A copy of what was set; where that is a std::shared_ptr, the same object. Empty when there
    /// is none.
    std::any result() const { return *get(result_); }
    void setResult(std::any value) {
        set(result_, std::make_shared<const std::any>(std::move(value)));
    }

private:
    // Never null. Shared, so that an object of the caller's is not copied under the lock.
    std::shared_ptr<const std::any> result_ = std::make_shared<const std::any>();
};

/// A page of objects. When `error` is set the properties of this class are nothing.
class RKT_EXPORT RKTServiceArrayResult : public RKTServiceResult {
public:
    /// In the order of the answer; no element is null.
    using Results = std::vector<std::shared_ptr<RKTServiceRepository>>;

    ~RKTServiceArrayResult() override;
    /// As RKTServiceResult's, for this class.
    static std::shared_ptr<RKTServiceArrayResult> resultWithHTTPURLResponse(
        const RKTHTTPURLResponse* response);

    /// Empty for a page without repositories. Nothing after a failure, and when the answer was a
    /// success but not of the form that the service promises.
    ///
    /// The repositories of a page share their memory, which is freed when nobody keeps any of them.
    /// So a std::weak_ptr to one lives as long as any, and std::owner_less does not tell them
    /// apart; their addresses do.
    std::optional<Results> results() const { return get(results_); }
    void setResults(std::optional<Results> value) { set(results_, std::move(value)); }

    /// Which page this is, counted from 1.
    std::optional<RKTNumber> page() const { return get(page_); }
    void setPage(std::optional<RKTNumber> value) { set(page_, value); }

    /// As far as the service tells: 0 when it does not, which includes the last page of GitHub and
    /// GitLab. Nil for Bitbucket Server, whose pages have no number.
    std::optional<RKTNumber> totalNumberOfPages() const { return get(totalNumberOfPages_); }
    void setTotalNumberOfPages(std::optional<RKTNumber> value) { set(totalNumberOfPages_, value); }

private:
    std::optional<Results> results_;
    std::optional<RKTNumber> page_;
    std::optional<RKTNumber> totalNumberOfPages_;
};

#endif
