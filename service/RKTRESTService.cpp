#include "KorvoGitService/RKTRESTService.h"

#include <utility>

#include "KorvoGitService/KorvoCore.h"
#include "core/HTTPError.h"
#include "core/Secrets.h"
#include "support/JSONReading.h"
#include "support/ReusedText.h"
#include "support/Text.h"

namespace {

using Response = std::shared_ptr<const RKTHTTPURLResponse>;
using Handler = std::function<void(const RKTJSONDocument* document, const Response& response,
                                   std::optional<RKTError> error)>;

void handleAnswer(bool parseFirst, std::string& body, const Response& response,
                  const Handler& handler) {
    const bool standsForDictionary = parseFirst && body.empty();
    std::optional<RKTError> parseError;
    const auto parsed =
        standsForDictionary ? std::nullopt : rkt::JSONDocumentInPlace(body, &parseError);
    const RKTJSONDocument* document = parsed ? &*parsed : nullptr;
    if (standsForDictionary) document = &RKTJSONSerialization::emptyDictionary();

    const int status = response->statusCode();
    const bool failed = rkt::isFailureStatus(status);
    if (!document && (parseFirst || !failed)) return handler(nullptr, response, parseError);
    if (failed) {
        const auto root = document ? std::optional(document->root()) : std::nullopt;
        return handler(nullptr, response, rkt::errorWithHTTPStatus(status, root));
    }
    handler(document, response, std::nullopt);
}

/// For a service whose credentials were set to null: nothing is known of the account.
const RKTServiceCredentials& noCredentials() {
    static const auto& credentials = *new RKTServiceCredentials(std::nullopt, std::nullopt);
    return credentials;
}

}  // namespace

std::string RKTRESTService::acceptHeader() const {
    return "application/json";
}

RKTRESTService::ResponseOrder RKTRESTService::responseOrder() const {
    return ResponseOrder::ParseThenStatus;
}

std::string RKTRESTService::validationPathForCredentials(const RKTServiceCredentials&) const {
    return "/user";
}

std::shared_ptr<RKTURLSessionDataTask> RKTRESTService::validateCredentialsWithCompletionHandler(
    ValidationHandler completionHandler) {
    const auto own = credentials();
    const auto& account = own ? *own : noCredentials();
    return sendGETRequest(
        account, validationPathForCredentials(account), {},
        [handler = std::move(completionHandler)](const RKTJSONDocument*, const Response&,
                                                 std::optional<RKTError> error) {
            if (handler) handler(std::move(error));
        });
}

std::shared_ptr<RKTURLSessionDataTask> RKTRESTService::fetchRepositoriesWithRequest(
    std::shared_ptr<const RKTRepositoriesRequest> request, RepositoriesHandler completionHandler) {
    if (!request) request = std::make_shared<const RKTRepositoriesRequest>();
    Listing listing = listingForRequest(std::move(request));
    return sendGETRequestWithPath(
        listing.path, listing.parameters,
        [read = std::move(listing.read), handler = std::move(completionHandler)](
            const RKTJSONDocument* page, const Response& response, std::optional<RKTError> error) {
            auto result = RKTServiceArrayResult::resultWithHTTPURLResponse(response.get());
            if (page) {
                read(page->root(), *result);
            } else {
                result->setError(std::move(error));
            }
            if (handler) handler(std::move(result));
        });
}

std::shared_ptr<RKTURLSessionDataTask> RKTRESTService::sendGETRequestWithPath(
    std::string_view path, const Parameters& parameters, JSONHandler completionHandler) {
    const auto own = credentials();
    return sendGETRequest(own ? *own : noCredentials(), path, parameters,
                          std::move(completionHandler));
}

std::shared_ptr<RKTURLSessionDataTask> RKTRESTService::sendGETRequest(
    const RKTServiceCredentials& credentials, std::string_view path, const Parameters& parameters,
    JSONHandler completionHandler) {
    const auto session = URLSession();
    if (!session) return nullptr;
    auto components = componentsForPath(credentials, path);
    if (components && !parameters.empty()) components->setQueryItems(parameters);
    RKTURLRequest request(components ? components->URL() : std::nullopt);
    request.setValue(acceptHeader(), "Accept");
    request.setValue(authorizationForCredentials(credentials), "Authorization");

    auto handler = [secrets = rkt::Secrets(credentials), finish = std::move(completionHandler)](
                       const RKTJSONDocument* document, const Response& response,
                       std::optional<RKTError> error) {
        if (error) error = secrets.removedFrom(*error);
        finish(document, response, std::move(error));
    };
    auto task = session->dataTaskWithRequest(
        std::move(request), [parseFirst = responseOrder() == ResponseOrder::ParseThenStatus,
                             handler = Handler(std::move(handler))](std::optional<std::string> data,
                                                                    const Response& response,
                                                                    std::optional<RKTError> error) {
            if (error) return handler(nullptr, response, std::move(error));
            handleAnswer(parseFirst, *data, response, handler);
            rkt::giveReusedText(std::move(*data));
        });
    task->resume();
    return task;
}

std::string RKTRESTService::basicAuthorization(const RKTServiceCredentials& credentials) {
    return "Basic " +
           rkt::base64(rkt::orNull(credentials.user()) + ":" + rkt::orNull(credentials.token()));
}

std::string RKTRESTService::bearerAuthorization(const RKTServiceCredentials& credentials) {
    return "Bearer " + rkt::orNull(credentials.token());
}

void RKTRESTService::append(std::string_view name, std::optional<std::string> value,
                            Parameters& parameters) {
    if (value) parameters.push_back({std::string(name), std::move(value)});
}

void RKTRESTService::appendPaging(const RKTRepositoriesRequest& request, std::string_view countName,
                                  Parameters& parameters) {
    const auto text = [](const std::optional<RKTNumber>& number) {
        return number ? std::optional(number->stringValue()) : std::nullopt;
    };
    append("page", text(request.page()), parameters);
    append(countName, text(request.countPerPage()), parameters);
}

std::optional<std::string> RKTRESTService::sortField(const RKTRepositoriesRequest& request,
                                                     const SortFields& fields) {
    const std::uint64_t key = request.sortKey();
    if (key >= fields.size() || !fields[key]) return std::nullopt;
    return fields[key];
}

std::optional<std::string> RKTRESTService::sortDirection(const RKTRepositoriesRequest& request) {
    switch (request.sortDirection()) {
        case RKTServiceSortDirectionAscending:
            return "asc";
        case RKTServiceSortDirectionDescending:
            return "desc";
        default:
            return std::nullopt;
    }
}

std::optional<std::string> RKTRESTService::knownVisibility(const RKTRepositoriesRequest& request) {
    const auto visibility = request.visibility();
    const bool known = visibility == RKTServiceRepositoryVisibilityPublic ||
                       visibility == RKTServiceRepositoryVisibilityPrivate ||
                       visibility == RKTServiceRepositoryVisibilityInternal;
    return known ? visibility : std::nullopt;
}

bool RKTRESTService::readElements(const RKTJSONValue& page, const RKTRepositoryMapping& mapping,
                                  RKTServiceArrayResult& result) {
    const auto elements = page.array();
    if (elements) result.setResults(mapping.repositoriesWithArray(*elements));
    return elements.has_value();
}

bool RKTRESTService::readValues(const RKTJSONValue& page, const RKTRepositoryMapping& mapping,
                                RKTServiceArrayResult& result) {
    const auto envelope = page.dictionary();
    if (!envelope) return false;
    const auto values = kc_objectOfClass<RKTJSONArray>(*envelope, "values");
    result.setResults(values ? mapping.repositoriesWithArray(*values)
                             : RKTServiceArrayResult::Results());
    return true;
}

void RKTRESTService::setPagingFromLinks(const RKTRepositoriesRequest& request,
                                        RKTServiceArrayResult& result) {
    result.setPage(request.page().value_or(RKTNumber(1)));
    std::int64_t total = 0;
    const auto relations = result.linkRelations().value_or(RKTServiceResult::LinkRelations());
    if (const auto last = relations.find(RKTServiceLinkRelationLast); last != relations.end()) {
        const auto parameters = kc_queryParameters(last->second);
        const auto page = parameters.find("page");
        if (page != parameters.end()) total = rkt::integerFromText(page->second);
    }
    result.setTotalNumberOfPages(RKTNumber(total));
}

RKTRESTService::PageReader RKTRESTService::readerPagedByLinks(
    ResultsReader readResults, const RKTRepositoryMapping& mapping,
    std::shared_ptr<const RKTRepositoriesRequest> request) {
    return [readResults, &mapping, request = std::move(request)](const RKTJSONValue& page,
                                                                 RKTServiceArrayResult& result) {
        if (readResults(page, mapping, result)) setPagingFromLinks(*request, result);
    };
}
