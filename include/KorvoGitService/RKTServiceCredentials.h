// An account, as the caller describes it.

#ifndef KORVOGITSERVICE_RKTSERVICECREDENTIALS_H
#define KORVOGITSERVICE_RKTSERVICECREDENTIALS_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTDate.h"
#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTRecord.h"
#include "KorvoGitService/RKTURL.h"

/// Service types: the values of `serviceType` and the keys of the registry. Compared by value, with
/// regard to case.
RKT_EXPORT extern const char* const RKTServiceTypeGitHub;            ///< "GitHub"
RKT_EXPORT extern const char* const RKTServiceTypeGitHubEnterprise;  ///< "GitHubEnterprise"
RKT_EXPORT extern const char* const RKTServiceTypeGitLab;            ///< "GitLab"
RKT_EXPORT extern const char* const RKTServiceTypeGitLabSelfHosted;  ///< "GitLabSelfHosted"
RKT_EXPORT extern const char* const RKTServiceTypeBitbucket;  ///< "Bitbucket", the cloud service
RKT_EXPORT extern const char* const RKTServiceTypeBitbucketServer;    ///< "BitbucketServer"
RKT_EXPORT extern const char* const RKTServiceTypeAzureDevOps;        ///< "AzureDevOps"
RKT_EXPORT extern const char* const RKTServiceTypeAzureDevOpsServer;  ///< "AzureDevOpsServer"

/// Credential types: the values of `credentialType`.
RKT_EXPORT extern const char* const
    RKTServiceCredentialTypeToken;  ///< "Token", a personal access token
RKT_EXPORT extern const char* const RKTServiceCredentialTypeOAuth2;  ///< "OAuth2", an access token
RKT_EXPORT extern const char* const RKTServiceCredentialTypeBasic;   ///< "Basic", a password

/// Which service, where, and with which secret; plus the working fields of an OAuth2 sign-in. Every
/// property may be unset and none is checked here. The record holds the caller's secrets in plain
/// memory and writes them nowhere.
class RKT_EXPORT RKTServiceCredentials : public RKTRecord {
public:
    /// Plain `init` is misuse.
    /// @throws RKTInvalidArgumentException always
    RKTServiceCredentials();
    /// `initWithServiceType:credentialType:`
    RKTServiceCredentials(std::optional<std::string> serviceType,
                          std::optional<std::string> credentialType);
    virtual ~RKTServiceCredentials();

    /// `copyWithZone:`: a record of the same dynamic class with all thirteen properties. A subclass
    /// overrides this to make its own kind and calls copyPropertiesTo(). The properties are read
    /// one after another, so a copy that is taken while another thread writes may mix old and new
    /// ones.
    virtual std::shared_ptr<RKTServiceCredentials> copyWithZone() const;

    /// `localizedNameForCredentialType:`: "Personal Access Token" and the like; nothing for an
    /// unknown type.
    static std::optional<std::string> localizedNameForCredentialType(
        std::optional<std::string_view> credentialType);

    /// Which class serves the account. Changing it in a record does not change services that were
    /// made of it.
    std::optional<std::string> serviceType() const { return get(serviceType_); }
    void setServiceType(std::optional<std::string> value) { set(serviceType_, std::move(value)); }

    /// How the token is sent; what a service does with each is in docs/services.md.
    std::optional<std::string> credentialType() const { return get(credentialType_); }
    void setCredentialType(std::optional<std::string> value) {
        set(credentialType_, std::move(value));
    }

    /// The server's address: the caller's for self-hosted services, otherwise
    /// `defaultURLForServiceType:`.
    std::optional<RKTURL> URL() const { return get(URL_); }
    void setURL(std::optional<RKTURL> value) { set(URL_, std::move(value)); }

    /// The login; at Bitbucket Cloud with an API token the e-mail address. Suggested to the service
    /// in a sign-in.
    std::optional<std::string> user() const { return get(user_); }
    void setUser(std::optional<std::string> value) { set(user_, std::move(value)); }

    /// The secret: personal access token, OAuth2 access token or password.
    std::optional<std::string> token() const { return get(token_); }
    void setToken(std::optional<std::string> value) { set(token_, std::move(value)); }

    /// Set by a token update; nothing when the service gave none. Works once at GitHub.
    std::optional<std::string> refreshToken() const { return get(refreshToken_); }
    void setRefreshToken(std::optional<std::string> value) { set(refreshToken_, std::move(value)); }

    /// When the OAuth2 access token expires; RKTDateDistantFuture() when it does not.
    std::optional<RKTDate> expiryDate() const { return get(expiryDate_); }
    void setExpiryDate(std::optional<RKTDate> value) { set(expiryDate_, std::move(value)); }

    /// What the service gave the application when it was registered. Public.
    std::optional<std::string> OAuthClientID() const { return get(OAuthClientID_); }
    void setOAuthClientID(std::optional<std::string> value) {
        set(OAuthClientID_, std::move(value));
    }

    /// The other half. Sent in token requests only, never in the authorize URL.
    std::optional<std::string> OAuthClientSecret() const { return get(OAuthClientSecret_); }
    void setOAuthClientSecret(std::optional<std::string> value) {
        set(OAuthClientSecret_, std::move(value));
    }

    /// The authorization code that the redirect brought; for a refresh, the refresh token.
    std::optional<std::string> OAuthCode() const { return get(OAuthCode_); }
    void setOAuthCode(std::optional<std::string> value) { set(OAuthCode_, std::move(value)); }

    /// The permissions to ask for, in the service's words; joined by commas. Nothing leaves the
    /// choice to the service.
    std::optional<std::vector<std::string>> OAuthScopes() const { return get(OAuthScopes_); }
    void setOAuthScopes(std::optional<std::vector<std::string>> value) {
        set(OAuthScopes_, std::move(value));
    }

    /// Sent in the authorize URL and compared on return, against forged redirects: fresh and random
    /// for every sign-in.
    std::optional<std::string> OAuthState() const { return get(OAuthState_); }
    void setOAuthState(std::optional<std::string> value) { set(OAuthState_, std::move(value)); }

    /// Where the browser is sent back to; registered with the service. Nothing: the one that is
    /// registered.
    std::optional<RKTURL> OAuthRedirectURL() const { return get(OAuthRedirectURL_); }
    void setOAuthRedirectURL(std::optional<RKTURL> value) {
        set(OAuthRedirectURL_, std::move(value));
    }

protected:
    /// Copies the eleven properties that the initializer does not take.
    void copyPropertiesTo(RKTServiceCredentials& copy) const;

private:
    std::optional<std::string> serviceType_;
    std::optional<std::string> credentialType_;
    std::optional<RKTURL> URL_;
    std::optional<std::string> user_;
    std::optional<std::string> token_;
    std::optional<std::string> refreshToken_;
    std::optional<RKTDate> expiryDate_;
    std::optional<std::string> OAuthClientID_;
    std::optional<std::string> OAuthClientSecret_;
    std::optional<std::string> OAuthCode_;
    std::optional<std::vector<std::string>> OAuthScopes_;
    std::optional<std::string> OAuthState_;
    std::optional<RKTURL> OAuthRedirectURL_;
};

#endif
