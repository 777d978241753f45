// What services with a REST API that answers in JSON have in common.

#ifndef KORVOGITSERVICE_RKTRESTSERVICE_H
#define KORVOGITSERVICE_RKTRESTSERVICE_H

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTJSON.h"
#include "KorvoGitService/RKTRepositoryMapping.h"
#include "KorvoGitService/RKTService.h"
#include "KorvoGitService/RKTURLComponents.h"

/// Implements the two network operations on top of four things that each adapter says: where the
/// API is, how a request is signed, what to ask for, and how a page is read. An adapter overrides
/// those; it does no network work of its own. The overrides may be called from several threads at
/// once and keep no state.
class RKT_EXPORT RKTRESTService : public RKTService {
public:
    std::shared_ptr<RKTURLSessionDataTask> validateCredentialsWithCompletionHandler(
        ValidationHandler completionHandler) override;
    std::shared_ptr<RKTURLSessionDataTask> fetchRepositoriesWithRequest(
        std::shared_ptr<const RKTRepositoriesRequest> request,
        RepositoriesHandler completionHandler) override;

protected:
    /// For an adapter's constructor, which passes on what make() gave it.
    explicit RKTRESTService(Initializer initializer) : RKTService(initializer) {}

    /// A query's items in the order in which they are sent, not percent-encoded.
    using Parameters = std::vector<RKTURLQueryItem>;
    /// Fills the result from a page's JSON: `results`, `page` and `totalNumberOfPages`. Called on
    /// the session's queue, for successes only. It returns without filling anything when the page's
    /// top level is not of the type that the service promises; the caller then gets a result that
    /// has neither an error nor results.
    using PageReader = std::function<void(const RKTJSONValue& page, RKTServiceArrayResult& result)>;
    /// Receives either a document, which lives as long as the call, or an error; and the response
    /// if there was one.
    using JSONHandler = std::function<void(
        const RKTJSONDocument* document, const std::shared_ptr<const RKTHTTPURLResponse>& response,
        std::optional<RKTError> error)>;

    /// How a listing is asked for and read.
    struct Listing {
        /// Below the API's root; begins with "/".
        std::string path;
        /// May be empty: then the query of componentsForPath() stays.
        Parameters parameters;
        /// Called once at most, and not after a failure.
        PageReader read;
    };

    /// What is looked at first, for answers that are not what the service promises.
    enum class ResponseOrder {
        /// The body is parsed first (an empty one stands for an empty dictionary), then the status
        /// is tested: an error page that is not JSON reaches the caller as the parser's error.
        ParseThenStatus,
        /// The status is tested first: an error page reaches the caller as the HTTP error, and an
        /// empty body of a success is the parser's error.
        StatusThenParse,
    };

    /// The URL of `path` (which begins with "/") at this account's API. Nothing makes a request
    /// without a URL, which fails in the session with NSURLErrorUnsupportedURL.
    virtual std::optional<RKTURLComponents> componentsForPath(
        const RKTServiceCredentials& credentials, std::string_view path) const = 0;
    /// The "Authorization" header's value; nothing sends none.
    virtual std::optional<std::string> authorizationForCredentials(
        const RKTServiceCredentials& credentials) const = 0;
    /// What `fetchRepositoriesWithRequest:completionHandler:` asks for, and who reads the answer.
    /// The request is never null; a sort key or filter that the service does not have is left out.
    virtual Listing listingForRequest(
        std::shared_ptr<const RKTRepositoriesRequest> request) const = 0;

    /// Said only by an adapter that differs from these: "application/json", ParseThenStatus,
    /// "/user".
    virtual std::string acceptHeader() const;
    /// ParseThenStatus.
    virtual ResponseOrder responseOrder() const;
    /// Where `validateCredentialsWithCompletionHandler:` asks: "/user". Any status of success there
    /// means that the credentials are good.
    virtual std::string validationPathForCredentials(
        const RKTServiceCredentials& credentials) const;

    /// "Basic %@" over base64 of "user:token" (RFC 7617), where what is not set is formatted as
    /// "(null)".
    static std::string basicAuthorization(const RKTServiceCredentials& credentials);
    /// "Bearer %@" with the token (RFC 6750), formatted alike.
    static std::string bearerAuthorization(const RKTServiceCredentials& credentials);

    /// What listings send.

    /// Appends an item, unless there is no value.
    static void append(std::string_view name, std::optional<std::string> value,
                       Parameters& parameters);
    /// Appends "page" and "per_page" (or what the service calls it) as decimal text, each when the
    /// request has it.
    static void appendPaging(const RKTRepositoriesRequest& request, std::string_view countName,
                             Parameters& parameters);
    /// A service's names for RKTServiceSortKeyDefault and the following; null for what it cannot
    /// sort by.
    using SortFields = std::array<const char*, 6>;
    /// The service's name for the request's sort key; nothing for a key that it cannot sort by or
    /// that is not known.
    static std::optional<std::string> sortField(const RKTRepositoriesRequest& request,
                                                const SortFields& fields);
    /// "asc" or "desc".
    static std::optional<std::string> sortDirection(const RKTRepositoriesRequest& request);
    /// The request's visibility, if it is "public", "private" or "internal".
    static std::optional<std::string> knownVisibility(const RKTRepositoriesRequest& request);

    /// How pages are read.

    /// Sets `results` from the page's elements. False, and nothing set, when the page is of another
    /// JSON type.
    using ResultsReader = bool (*)(const RKTJSONValue& page, const RKTRepositoryMapping& mapping,
                                   RKTServiceArrayResult& result);
    /// The page is an array of elements.
    static bool readElements(const RKTJSONValue& page, const RKTRepositoryMapping& mapping,
                             RKTServiceArrayResult& result);
    /// The page is a dictionary with the elements under "values"; without these there are no
    /// elements.
    static bool readValues(const RKTJSONValue& page, const RKTRepositoryMapping& mapping,
                           RKTServiceArrayResult& result);
    /// The request's page, or 1; and the total as the "page" of the "last" link says, 0 when it
    /// does not.
    static void setPagingFromLinks(const RKTRepositoriesRequest& request,
                                   RKTServiceArrayResult& result);
    /// Both in one. The mapping lives as long as the process.
    static PageReader readerPagedByLinks(ResultsReader readResults,
                                         const RKTRepositoryMapping& mapping,
                                         std::shared_ptr<const RKTRepositoriesRequest> request);

    /// `sendGETRequestWithPath:parameters:completionHandler:`. Reads the credentials once. Without
    /// parameters the URL's own query stays. The handler runs on the session's queue, exactly once.
    /// Returns the task, already started; null, with the handler never called, when the service was
    /// left without a session.
    std::shared_ptr<RKTURLSessionDataTask> sendGETRequestWithPath(std::string_view path,
                                                                  const Parameters& parameters,
                                                                  JSONHandler completionHandler);

private:
    std::shared_ptr<RKTURLSessionDataTask> sendGETRequest(const RKTServiceCredentials& credentials,
                                                          std::string_view path,
                                                          const Parameters& parameters,
                                                          JSONHandler completionHandler);
};

#endif
