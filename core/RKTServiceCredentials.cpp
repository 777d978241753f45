#include "KorvoGitService/RKTServiceCredentials.h"

#include <utility>

#include "KorvoGitService/KorvoGitServiceBase.h"
#include "core/Misuse.h"

const char* const RKTServiceTypeGitHub = "GitHub";
const char* const RKTServiceTypeGitHubEnterprise = "GitHubEnterprise";
const char* const RKTServiceTypeGitLab = "GitLab";
const char* const RKTServiceTypeGitLabSelfHosted = "GitLabSelfHosted";
const char* const RKTServiceTypeBitbucket = "Bitbucket";
const char* const RKTServiceTypeBitbucketServer = "BitbucketServer";
const char* const RKTServiceTypeAzureDevOps = "AzureDevOps";
const char* const RKTServiceTypeAzureDevOpsServer = "AzureDevOpsServer";

const char* const RKTServiceCredentialTypeToken = "Token";
const char* const RKTServiceCredentialTypeOAuth2 = "OAuth2";
const char* const RKTServiceCredentialTypeBasic = "Basic";

RKTServiceCredentials::RKTServiceCredentials() {
    rkt::raiseMustBeInitializedUsing("initWithServiceType:credentialType:");
}

RKTServiceCredentials::RKTServiceCredentials(std::optional<std::string> serviceType,
                                             std::optional<std::string> credentialType)
    : serviceType_(std::move(serviceType)), credentialType_(std::move(credentialType)) {}

RKTServiceCredentials::~RKTServiceCredentials() = default;

std::shared_ptr<RKTServiceCredentials> RKTServiceCredentials::copyWithZone() const {
    auto copy = std::make_shared<RKTServiceCredentials>(serviceType(), credentialType());
    copyPropertiesTo(*copy);
    return copy;
}

void RKTServiceCredentials::copyPropertiesTo(RKTServiceCredentials& copy) const {
    copy.setURL(URL());
    copy.setUser(user());
    copy.setToken(token());
    copy.setExpiryDate(expiryDate());
    copy.setRefreshToken(refreshToken());
    copy.setOAuthClientID(OAuthClientID());
    copy.setOAuthClientSecret(OAuthClientSecret());
    copy.setOAuthCode(OAuthCode());
    copy.setOAuthScopes(OAuthScopes());
    copy.setOAuthState(OAuthState());
    copy.setOAuthRedirectURL(OAuthRedirectURL());
}

std::optional<std::string> RKTServiceCredentials::localizedNameForCredentialType(
    std::optional<std::string_view> credentialType) {
    if (credentialType == RKTServiceCredentialTypeToken) {
        return RKTServiceLocalizedString("Personal Access Token");
    }
    if (credentialType == RKTServiceCredentialTypeOAuth2) {
        return RKTServiceLocalizedString("OAuth Access Token");
    }
    if (credentialType == RKTServiceCredentialTypeBasic) {
        return RKTServiceLocalizedString("Basic Auth");
    }
    return std::nullopt;
}
