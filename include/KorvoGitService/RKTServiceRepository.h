// A remote repository, whichever service it came from.

#ifndef KORVOGITSERVICE_RKTSERVICEREPOSITORY_H
#define KORVOGITSERVICE_RKTSERVICEREPOSITORY_H

#include <optional>
#include <string>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTNumber.h"
#include "KorvoGitService/RKTRecord.h"
#include "KorvoGitService/RKTServiceIdentifier.h"
#include "KorvoGitService/RKTURL.h"

/// Repository states; also filter values of RKTRepositoriesRequest.
RKT_EXPORT extern const char* const RKTServiceRepositoryStateOpen;  ///< "open": active
RKT_EXPORT extern const char* const
    RKTServiceRepositoryStateClosed;  ///< "closed": archived or otherwise read-only

/// Repository visibilities; also filter values.
RKT_EXPORT extern const char* const RKTServiceRepositoryVisibilityPublic;   ///< "public"
RKT_EXPORT extern const char* const RKTServiceRepositoryVisibilityPrivate;  ///< "private"
RKT_EXPORT extern const char* const
    RKTServiceRepositoryVisibilityInternal;  ///< "internal": to all members, not beyond

/// One repository of a listing. Every property is nothing until an adapter sets it, and stays so
/// when its service does not report it; which service fills what is in docs/services.md. Nothing is
/// checked. Two records describe the same repository when their identifiers are equal and they come
/// from one service.
class RKT_EXPORT RKTServiceRepository : public RKTRecord {
public:
    RKTServiceRepository() = default;
    ~RKTServiceRepository() = default;

    /// The service's own; stays the same when the repository is renamed or moved.
    std::optional<RKTServiceIdentifier> identifier() const { return get(identifier_); }
    void setIdentifier(std::optional<RKTServiceIdentifier> value) {
        set(identifier_, std::move(value));
    }

    /// Without the owner, for display.
    std::optional<std::string> name() const { return get(name_); }
    void setName(std::optional<std::string> value) { set(name_, std::move(value)); }

    /// The name qualified by owner or namespace, for display.
    std::optional<std::string> fullName() const { return get(fullName_); }
    void setFullName(std::optional<std::string> value) { set(fullName_, std::move(value)); }

    /// The description that its owner gave it.
    std::optional<std::string> descriptiveText() const { return get(descriptiveText_); }
    void setDescriptiveText(std::optional<std::string> value) {
        set(descriptiveText_, std::move(value));
    }

    /// The repository's segment of its address.
    std::optional<std::string> path() const { return get(path_); }
    void setPath(std::optional<std::string> value) { set(path_, std::move(value)); }

    /// The path qualified by owner or namespace.
    std::optional<std::string> fullPath() const { return get(fullPath_); }
    void setFullPath(std::optional<std::string> value) { set(fullPath_, std::move(value)); }

    /// Of the owning user, group or workspace.
    std::optional<RKTServiceIdentifier> ownerIdentifier() const { return get(ownerIdentifier_); }
    void setOwnerIdentifier(std::optional<RKTServiceIdentifier> value) {
        set(ownerIdentifier_, std::move(value));
    }

    /// For display: at GitHub the login, at GitLab the namespace's name, at Bitbucket Cloud the
    /// display name.
    std::optional<std::string> ownerName() const { return get(ownerName_); }
    void setOwnerName(std::optional<std::string> value) { set(ownerName_, std::move(value)); }

    /// One of the states above.
    std::optional<std::string> state() const { return get(state_); }
    void setState(std::optional<std::string> value) { set(state_, std::move(value)); }

    /// One of the visibilities above; private when the service sent a word that is not known.
    std::optional<std::string> visibility() const { return get(visibility_); }
    void setVisibility(std::optional<std::string> value) { set(visibility_, std::move(value)); }

    /// Holds a boolean.
    std::optional<RKTNumber> isFork() const { return get(isFork_); }
    void setIsFork(std::optional<RKTNumber> value) { set(isFork_, std::move(value)); }

    /// People who marked it; 0 is known, nothing is not.
    std::optional<RKTNumber> numberOfStars() const { return get(numberOfStars_); }
    void setNumberOfStars(std::optional<RKTNumber> value) { set(numberOfStars_, std::move(value)); }

    /// Forks of it at the same service, as far as the service counts them.
    std::optional<RKTNumber> numberOfForks() const { return get(numberOfForks_); }
    void setNumberOfForks(std::optional<RKTNumber> value) { set(numberOfForks_, std::move(value)); }

    /// A picture of the repository or its owner.
    std::optional<RKTURL> avatarURL() const { return get(avatarURL_); }
    void setAvatarURL(std::optional<RKTURL> value) { set(avatarURL_, std::move(value)); }

    /// The repository's page in the service's web interface.
    std::optional<RKTURL> webURL() const { return get(webURL_); }
    void setWebURL(std::optional<RKTURL> value) { set(webURL_, std::move(value)); }

    /// Clone addresses.
    std::optional<RKTURL> SSHRepositoryURL() const { return get(SSHRepositoryURL_); }
    void setSSHRepositoryURL(std::optional<RKTURL> value) {
        set(SSHRepositoryURL_, std::move(value));
    }

    /// For cloning by HTTP; http where a self-hosted server has no TLS. Bitbucket Cloud puts a
    /// user's name into it.
    std::optional<RKTURL> HTTPSRepositoryURL() const { return get(HTTPSRepositoryURL_); }
    void setHTTPSRepositoryURL(std::optional<RKTURL> value) {
        set(HTTPSRepositoryURL_, std::move(value));
    }

    /// Without "refs/heads/"; an empty repository may have one that does not exist yet.
    std::optional<std::string> defaultBranchName() const { return get(defaultBranchName_); }
    void setDefaultBranchName(std::optional<std::string> value) {
        set(defaultBranchName_, std::move(value));
    }

private:
    std::optional<RKTServiceIdentifier> identifier_;
    std::optional<std::string> name_;
    std::optional<std::string> fullName_;
    std::optional<std::string> descriptiveText_;
    std::optional<std::string> path_;
    std::optional<std::string> fullPath_;
    std::optional<RKTServiceIdentifier> ownerIdentifier_;
    std::optional<std::string> ownerName_;
    std::optional<std::string> state_;
    std::optional<std::string> visibility_;
    std::optional<RKTNumber> isFork_;
    std::optional<RKTNumber> numberOfStars_;
    std::optional<RKTNumber> numberOfForks_;
    std::optional<RKTURL> avatarURL_;
    std::optional<RKTURL> webURL_;
    std::optional<RKTURL> SSHRepositoryURL_;
    std::optional<RKTURL> HTTPSRepositoryURL_;
    std::optional<std::string> defaultBranchName_;
};

#endif
