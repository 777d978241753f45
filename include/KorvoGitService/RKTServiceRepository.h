// A remote repository, whichever service it came from.

#ifndef KORVOGITSERVICE_RKTSERVICEREPOSITORY_H
#define KORVOGITSERVICE_RKTSERVICEREPOSITORY_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTNumber.h"
#include "KorvoGitService/RKTPackedTexts.h"
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
/// checked. A setter copies the text. Two records describe the same repository when their
/// identifiers are equal and they come from one service.
class RKT_EXPORT RKTServiceRepository : public RKTRecord {
public:
    RKTServiceRepository() = default;
    ~RKTServiceRepository() = default;

    /// The service's own; stays the same when the repository is renamed or moved.
    std::optional<RKTServiceIdentifier> identifier() const { return identifierAt(IdentifierText); }
    void setIdentifier(const std::optional<RKTServiceIdentifier>& value) {
        setIdentifierAt(IdentifierText, value);
    }

    /// Without the owner, for display.
    std::optional<std::string> name() const { return textAt(NameText); }
    void setName(std::optional<std::string_view> value) { setTextAt(NameText, value); }

    /// The name qualified by owner or namespace, for display.
    std::optional<std::string> fullName() const { return textAt(FullNameText); }
    void setFullName(std::optional<std::string_view> value) { setTextAt(FullNameText, value); }

    /// The description that its owner gave it.
    std::optional<std::string> descriptiveText() const { return textAt(DescriptiveTextText); }
    void setDescriptiveText(std::optional<std::string_view> value) {
        setTextAt(DescriptiveTextText, value);
    }

    /// The repository's segment of its address.
    std::optional<std::string> path() const { return textAt(PathText); }
    void setPath(std::optional<std::string_view> value) { setTextAt(PathText, value); }

    /// The path qualified by owner or namespace.
    std::optional<std::string> fullPath() const { return textAt(FullPathText); }
    void setFullPath(std::optional<std::string_view> value) { setTextAt(FullPathText, value); }

    /// Of the owning user, group or workspace.
    std::optional<RKTServiceIdentifier> ownerIdentifier() const { return identifierAt(OwnerText); }
    void setOwnerIdentifier(const std::optional<RKTServiceIdentifier>& value) {
        setIdentifierAt(OwnerText, value);
    }

    /// For display: at GitHub the login, at GitLab the namespace's name, at Bitbucket Cloud the
    /// display name.
    std::optional<std::string> ownerName() const { return textAt(OwnerNameText); }
    void setOwnerName(std::optional<std::string_view> value) { setTextAt(OwnerNameText, value); }

    /// One of the states above.
    std::optional<std::string> state() const { return textAt(StateText); }
    void setState(std::optional<std::string_view> value) { setTextAt(StateText, value); }

    /// One of the visibilities above; private when the service sent a word that is not known.
    std::optional<std::string> visibility() const { return textAt(VisibilityText); }
    void setVisibility(std::optional<std::string_view> value) { setTextAt(VisibilityText, value); }

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
    std::optional<RKTURL> avatarURL() const { return URLAt(AvatarURLText); }
    void setAvatarURL(std::optional<RKTURLView> value) { setURLAt(AvatarURLText, value); }

    /// The repository's page in the service's web interface.
    std::optional<RKTURL> webURL() const { return URLAt(WebURLText); }
    void setWebURL(std::optional<RKTURLView> value) { setURLAt(WebURLText, value); }

    /// Clone addresses.
    std::optional<RKTURL> SSHRepositoryURL() const { return URLAt(SSHRepositoryURLText); }
    void setSSHRepositoryURL(std::optional<RKTURLView> value) {
        setURLAt(SSHRepositoryURLText, value);
    }

    /// For cloning by HTTP; http where a self-hosted server has no TLS. Bitbucket Cloud puts a
    /// user's name into it.
    std::optional<RKTURL> HTTPSRepositoryURL() const { return URLAt(HTTPSRepositoryURLText); }
    void setHTTPSRepositoryURL(std::optional<RKTURLView> value) {
        setURLAt(HTTPSRepositoryURLText, value);
    }

    /// Without "refs/heads/"; an empty repository may have one that does not exist yet.
    std::optional<std::string> defaultBranchName() const { return textAt(DefaultBranchNameText); }
    void setDefaultBranchName(std::optional<std::string_view> value) {
        setTextAt(DefaultBranchNameText, value);
    }

private:
    friend class RKTRepositoryMapping;

    /// Places in texts_, in the order in which GitHub sends them: then each goes behind those that
    /// are there.
    enum Text : std::uint8_t {
        IdentifierText,
        OwnerText,
        NameText,
        FullNameText,
        OwnerNameText,
        AvatarURLText,
        WebURLText,
        DescriptiveTextText,
        SSHRepositoryURLText,
        HTTPSRepositoryURLText,
        StateText,
        VisibilityText,
        DefaultBranchNameText,
        PathText,
        FullPathText,
        TextCount
    };
    static_assert(TextCount <= RKTPackedTexts::count);

    std::optional<std::string> textAt(Text place) const;
    void setTextAt(Text place, std::optional<std::string_view> value);
    std::optional<RKTURL> URLAt(Text place) const;
    void setURLAt(Text place, std::optional<RKTURLView> value);
    std::optional<RKTServiceIdentifier> identifierAt(Text place) const;
    void setIdentifierAt(Text place, const std::optional<RKTServiceIdentifier>& value);

    RKTPackedTexts texts_;
    /// Of IdentifierText and OwnerText, where the identifier is a number and no text.
    std::array<std::optional<RKTNumber>, 2> identifierNumbers_;
    std::optional<RKTNumber> isFork_;
    std::optional<RKTNumber> numberOfStars_;
    std::optional<RKTNumber> numberOfForks_;
};

#endif
