// Hosting services: the registry of their adapters, what they say about themselves, and the service
// objects.

#ifndef KORVOGITSERVICE_RKTSERVICE_H
#define KORVOGITSERVICE_RKTSERVICE_H

#include <concepts>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTError.h"
#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTHTTPURLResponse.h"
#include "KorvoGitService/RKTServiceCredentials.h"
#include "KorvoGitService/RKTServiceRequest.h"
#include "KorvoGitService/RKTURL.h"
#include "KorvoGitService/RKTURLComponents.h"
#include "KorvoGitService/RKTURLRequest.h"
#include "KorvoGitService/RKTURLSession.h"

class RKTService;

/// The class side of an adapter: what it says about its service types, and how a service object is
/// made. There is one immutable object of each subclass, which lives as long as the process and may
/// be used from any thread. "The receiving class" of a class operation is the object on which it is
/// called.
class RKT_EXPORT RKTServiceClass {
public:
    RKTServiceClass(const RKTServiceClass&) = delete;
    RKTServiceClass& operator=(const RKTServiceClass&) = delete;

    /// `initWithCredentials:`: a service with a copy of the credentials and a session of its own.
    virtual std::shared_ptr<RKTService> initWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) const;

    /// Hooks for a user interface. Each takes a service type; an adapter answers for those that it
    /// registered.

    /// `localizedNameForServiceType:`. Nothing for a type that is not the adapter's.
    virtual std::optional<std::string> localizedNameForServiceType(
        std::string_view serviceType) const;
    /// `defaultURLForServiceType:`: what to fill into the credentials' URL. Nothing when only the
    /// user knows.
    virtual std::optional<RKTURL> defaultURLForServiceType(std::string_view serviceType) const;
    /// `requiresCustomURLForServiceType:`
    virtual bool requiresCustomURLForServiceType(std::string_view serviceType) const;
    /// `supportedCredentialTypesForServiceType:`, the preferred one first. Empty: there is no way
    /// to sign in.
    virtual std::vector<std::string> supportedCredentialTypesForServiceType(
        std::string_view serviceType) const;
    /// `personalAccessTokenHelpURLForServiceType:`: the service's page on making a token.
    virtual std::optional<RKTURL> personalAccessTokenHelpURLForServiceType(
        std::string_view serviceType) const;

    /// Hooks of the OAuth2 sign-in (RFC 6749 section 4.1), for adapters that offer it.

    /// `OAuth2AuthorizeEndpointForCredentials:`
    /// @throws RKTInvalidArgumentException unless overridden
    virtual RKTURL OAuth2AuthorizeEndpointForCredentials(
        const RKTServiceCredentials& credentials) const;
    /// `OAuth2AuthorizeAdditionalParamtersForCredentials:` (the name is spelled so, and callers
    /// rely on it): items to append to the authorize URL's query, or nothing.
    virtual std::optional<std::vector<RKTURLQueryItem>>
    OAuth2AuthorizeAdditionalParamtersForCredentials(
        const RKTServiceCredentials& credentials) const;
    /// `OAuth2AccessTokenEndpointForCredentials:`
    /// @throws RKTInvalidArgumentException unless overridden
    virtual RKTURL OAuth2AccessTokenEndpointForCredentials(
        const RKTServiceCredentials& credentials) const;

    /// The OAuth2 sign-in itself, for the class that serves the credentials' service type. The
    /// steps: fill in the client, the redirect URL, the scopes and a fresh random state; show
    /// OAuth2AuthorizeURLForCredentials() in a browser; hand the address that the browser was sent
    /// back to, to updateCredentials(); exchange the code with
    /// updateOAuth2AccessTokenWithCredentials(). The record is changed in place and must not be
    /// used elsewhere meanwhile.

    /// A provider's answer: its members that are texts.
    using OAuth2ResponseObject = std::map<std::string, std::string, std::less<>>;
    /// Receives nothing on success.
    using OAuth2CompletionHandler = std::function<void(std::optional<RKTError> error)>;

    /// `OAuth2AuthorizeURLForCredentials:`: the endpoint with the query client_id, response_type,
    /// redirect_uri, scope, state and the adapter's own items, in this order. What is not set is
    /// left out, but for client_id. Nothing when the endpoint's parts make no URL.
    /// @throws RKTInvalidArgumentException on RKTService's own class, or without the endpoint hook
    std::optional<RKTURL> OAuth2AuthorizeURLForCredentials(
        const RKTServiceCredentials& credentials) const;

    /// `updateCredentials:withOAuth2AuthorizeResponseURL:error:`: stores the redirect's code in
    /// `OAuthCode`; a redirect that has none clears it. False, with nothing changed, when the state
    /// is not the record's (RKTServiceErrorOAuth2StateMismatch; not checked when the record has
    /// none) or the provider reports an error. Only the URL's query is looked at.
    /// @param error  receives the reason of a failure; else is left alone
    /// @throws RKTInvalidArgumentException on RKTService's own class
    bool updateCredentials(RKTServiceCredentials& credentials,
                           const RKTURL& withOAuth2AuthorizeResponseURL,
                           std::optional<RKTError>* error = nullptr) const;

    /// `OAuth2AccessErrorWithResponseObject:`: what an answer's "error", "error_description" and
    /// "error_uri" say (RFC 6749 sections 4.1.2.1 and 5.2), as RKTServiceErrorOAuth2…; nothing
    /// without an "error".
    std::optional<RKTError> OAuth2AccessErrorWithResponseObject(
        const OAuth2ResponseObject& responseObject) const;

    /// `OAuth2AccessTokenRequestForCredentials:isRefresh:`: a POST whose body is a form with the
    /// code or, for a refresh, the refresh token, which is taken from `OAuthCode` too: put it there
    /// first. Values keep "&", "=" and "+" as they are.
    /// @throws RKTInvalidArgumentException on RKTService's own class, or without the endpoint hook
    RKTURLRequest OAuth2AccessTokenRequestForCredentials(const RKTServiceCredentials& credentials,
                                                         bool isRefresh) const;

    /// `updateCredentials:withOAuth2AccessTokenResponse:data:error:`: stores `token`,
    /// `refreshToken` and `expiryDate`, each also when the answer lacks it: no token, no refresh
    /// token, the distant future. The status is not looked at. False, with nothing changed, when
    /// the provider reports an error or the answer is unreadable: neither a form nor a JSON object
    /// by its media type (RKTServiceErrorOAuth2InvalidResponse), or JSON that does not parse
    /// (NSCocoaErrorDomain).
    /// @param error  receives the reason of a failure; else is left alone
    /// @throws RKTInvalidArgumentException on RKTService's own class
    bool updateCredentials(RKTServiceCredentials& credentials,
                           const RKTHTTPURLResponse& withOAuth2AccessTokenResponse,
                           std::string_view data, std::optional<RKTError>* error = nullptr) const;

    /// `updateOAuth2AccessTokenWithCredentials:isRefresh:completionHandler:`: sends that request
    /// through the shared session and reads its answer into the very record given (null means one
    /// with nothing set). Both the writing and, right after it, the handler happen on the main
    /// queue (RKTMainQueue.h), never inside this call; without a running main queue they never do.
    /// Returns the task, already started, for cancelling; once its answer waits in the main queue,
    /// the answer counts.
    /// @throws RKTInvalidArgumentException on RKTService's own class, or without the endpoint hook;
    /// the handler is not called then
    std::shared_ptr<RKTURLSessionDataTask> updateOAuth2AccessTokenWithCredentials(
        std::shared_ptr<RKTServiceCredentials> credentials, bool isRefresh,
        OAuth2CompletionHandler completionHandler) const;

protected:
    RKTServiceClass() = default;
    virtual ~RKTServiceClass();

private:
    friend class RKTService;
};

/// A service object: an account at a hosting service, ready to be asked. The abstract base of all
/// adapters.
///
/// Lifecycle: the service's session holds the service strongly until finishTasksAndInvalidate() or
/// invalidateAndCancel(); a service that is dropped without either is never freed. After either,
/// its network operations end with NSURLErrorCancelled; make a new service instead.
///
/// Threads: every operation may be called from any thread. Handlers run on the session's serial
/// queue, one at a time per service and never on the main thread; a caller that touches a user
/// interface goes there itself. Each handler runs exactly once (RKTURLSession.h has the contract).
class RKT_EXPORT RKTService : public RKTURLSessionDelegate,
                              public std::enable_shared_from_this<RKTService> {
public:
    /// Service type to class object; never null.
    using ClassesByServiceType = std::map<std::string, const RKTServiceClass*, std::less<>>;
    /// Receives nothing on success.
    using ValidationHandler = std::function<void(std::optional<RKTError> error)>;
    /// Receives a result always; its `error` tells whether the listing failed.
    using RepositoriesHandler = std::function<void(std::shared_ptr<RKTServiceArrayResult> result)>;

    /// The registry. The adapters of this library are in it before its first use, from any thread.

    /// `classesByServiceType`: a copy that later registrations do not change.
    static ClassesByServiceType classesByServiceType();
    /// `classForServiceType:`. Null for an unknown type.
    static const RKTServiceClass* classForServiceType(std::string_view serviceType);
    /// `setClass:forServiceType:`. Replaces an earlier class of that type; null removes it. The
    /// class object must live as long as the process.
    static void setClass(const RKTServiceClass* serviceClass, std::string_view forServiceType);
    /// `serviceWithCredentials:`: a service of the class registered for the credentials' service
    /// type. Null, without any error, when there is none, the credentials are null or have no type.
    static std::shared_ptr<RKTService> serviceWithCredentials(
        const std::shared_ptr<const RKTServiceCredentials>& credentials);

    /// The abstract base's own class object: its hooks give the base answers.
    static const RKTServiceClass* serviceClass();

protected:
    /// Only make() has one, so that a service is never without its session.
    class Initializer {
        friend class RKTService;
        Initializer() = default;
    };

public:
    /// Plain `init` is misuse.
    /// @throws RKTInvalidArgumentException always
    RKTService();
    /// For a subclass's constructor, which passes on what make() gave it.
    explicit RKTService(Initializer) {}
    ~RKTService() override;
    RKTService(const RKTService&) = delete;
    RKTService& operator=(const RKTService&) = delete;

    /// The session through which all requests of this service go. A replacement should have this
    /// service as its delegate; end the session that it replaces, which otherwise holds the service
    /// for ever.
    std::shared_ptr<RKTURLSession> URLSession() const;
    void setURLSession(std::shared_ptr<RKTURLSession> session);

    /// The service's own copy: changing the record that it was made from changes nothing here. The
    /// setter stores a copy too; requests that are under way keep what they were sent with.
    std::shared_ptr<RKTServiceCredentials> credentials() const;
    void setCredentials(const std::shared_ptr<const RKTServiceCredentials>& credentials);

    /// Work under way may finish, no new work starts, then the session lets go of the service.
    void finishTasksAndInvalidate();
    /// The same, and cancels the work under way.
    void invalidateAndCancel();

    /// `validateCredentialsWithCompletionHandler:`: asks the service whether the credentials work.
    /// Returns the task, already started, for cancelling.
    /// @throws RKTInvalidArgumentException unless overridden; the handler is not called then
    virtual std::shared_ptr<RKTURLSessionDataTask> validateCredentialsWithCompletionHandler(
        ValidationHandler completionHandler);

    /// `fetchRepositoriesWithRequest:completionHandler:`: one page of the account's repositories.
    /// Null means a request with nothing set. Returns the task, already started, for cancelling.
    /// @throws RKTInvalidArgumentException unless overridden; the handler is not called then
    virtual std::shared_ptr<RKTURLSessionDataTask> fetchRepositoriesWithRequest(
        std::shared_ptr<const RKTRepositoriesRequest> request,
        RepositoriesHandler completionHandler);

    /// What a class object's initWithCredentials() does: makes an S (which has a constructor that
    /// takes an Initializer), gives it a copy of the credentials, and a session whose delegate it
    /// is.
    template <std::derived_from<RKTService> S>
    static std::shared_ptr<S> make(
        const std::shared_ptr<const RKTServiceCredentials>& credentials) {
        auto service = std::make_shared<S>(Initializer());
        service->initializeWithCredentials(credentials);
        return service;
    }

private:
    void initializeWithCredentials(const std::shared_ptr<const RKTServiceCredentials>& credentials);

    mutable std::mutex mutex_;
    std::shared_ptr<RKTURLSession> URLSession_;
    std::shared_ptr<RKTServiceCredentials> credentials_;
};

#endif
