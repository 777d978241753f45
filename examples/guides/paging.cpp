// All repositories of an account, page by page.

#include <poll.h>

#include <functional>
#include <iostream>
#include <unordered_set>

#include "TestServer.h"

/// Fetches page after page. `onPage` and, once at the end, `onEnd` run on the main queue.
class AllRepositories : public std::enable_shared_from_this<AllRepositories> {
public:
    using Results = RKTServiceArrayResult::Results;

    AllRepositories(std::shared_ptr<RKTService> service, std::uint64_t countPerPage,
                    std::function<void(const Results& page)> onPage,
                    std::function<void(std::optional<RKTError> error)> onEnd)
        : service_(std::move(service)),
          countPerPage_(countPerPage),
          onPage_(std::move(onPage)),
          onEnd_(std::move(onEnd)) {}

    void fetch(std::uint64_t page = 1) {
        const auto request = std::make_shared<RKTRepositoriesRequest>();
        request->setPage(page);
        request->setCountPerPage(countPerPage_);
        // The handler runs on the service's queue; from there the result goes to the main one.
        const auto self = shared_from_this();
        service_->fetchRepositoriesWithRequest(request, [self, page](const auto& result) {
            RKTMainQueue::async([self, page, result] { self->receive(page, *result); });
        });
    }

private:
    void receive(std::uint64_t page, const RKTServiceArrayResult& result) {
        if (result.error()) return onEnd_(result.error());
        if (!result.results()) return onEnd_(incomplete());
        const Results fresh = withoutRepeated(*result.results());
        received_ += result.results()->size();
        barrenPages_ = fresh.empty() ? barrenPages_ + 1 : 0;
        if (!fresh.empty()) onPage_(fresh);
        if (isLastPage(result)) return onEnd_(std::nullopt);
        if (barrenPages_ <= mostBarrenPages) return fetch(pageAfter(page));
        // Nothing but repetitions follows, unless the pages are empty and yet link a next one.
        onEnd_(result.results()->empty() ? std::optional(incomplete()) : std::nullopt);
    }

    /// Bitbucket Server takes (page - 1) / countPerPage for the number of repositories to skip.
    bool skipsRepositories() const {
        return service_->credentials()->serviceType() == RKTServiceTypeBitbucketServer;
    }
    std::uint64_t pageAfter(std::uint64_t page) const {
        return skipsRepositories() ? received_ * countPerPage_ + 1 : page + 1;
    }
    /// It counts those that the account may not see, too, and repeats what follows them. A service
    /// with links may leave them out of its pages. One that goes on for ever is left alone.
    static constexpr int mostBarrenPages = 20;

    /// Services that page by links say whether there is a next page. The others, and those whose
    /// list fits one page, send no links: an empty page tells the end, but not a short one, since a
    /// service may give fewer than it was asked for. Links of a gateway say nothing about pages.
    static bool isLastPage(const RKTServiceArrayResult& result) {
        const auto links = result.linkRelations();
        const auto has = [&](const char* name) { return links && links->contains(name); };
        if (has(RKTServiceLinkRelationNext)) return false;
        return result.results()->empty() || has(RKTServiceLinkRelationFirst) ||
               has(RKTServiceLinkRelationPrevious);
    }

    /// For an answer that is JSON but no list, and for a list that may go on behind empty pages.
    static RKTError incomplete() {
        return {RKTError::NSURLErrorDomain,
                RKTError::NSURLErrorBadServerResponse,
                {{RKTError::NSLocalizedDescriptionKey, std::string("The list is not complete.")}}};
    }

    /// A page may repeat what came before, when the list grows meanwhile.
    Results withoutRepeated(Results page) {
        std::erase_if(page, [this](const auto& repository) {
            return !seen_.insert(nameOf(*repository)).second;
        });
        return page;
    }
    /// A service may give no identifier, or an empty text for all.
    static RKTServiceIdentifier nameOf(const RKTServiceRepository& repository) {
        const RKTServiceIdentifier none("");
        const auto identifier = repository.identifier().value_or(none);
        return identifier != none ? identifier : repository.fullName().value_or("");
    }

    const std::shared_ptr<RKTService> service_;
    const std::uint64_t countPerPage_;
    const std::function<void(const Results& page)> onPage_;
    const std::function<void(std::optional<RKTError> error)> onEnd_;
    std::unordered_set<RKTServiceIdentifier> seen_;
    std::uint64_t received_ = 0;
    int barrenPages_ = 0;  // without anything new, one after another
};

/// Lists octavia's repositories and waits for it; a graphical application would not wait.
static void listRepositories(const char* serviceType, const char* credentialType,
                             const TestServer& server, std::uint64_t countPerPage = 100) {
    const auto account = std::make_shared<RKTServiceCredentials>(serviceType, credentialType);
    account->setURL(RKTURL::URLWithString(
        serviceType == std::string(RKTServiceTypeGitLab) ? "https://gitlab.com" : server.url()));
    account->setUser("octavia");
    const bool password = credentialType == std::string(RKTServiceCredentialTypeBasic);
    account->setToken(password ? "demo-password-octavia" : "demo-token-octavia");

    std::cout << serviceType << ':';
    bool done = false;
    const auto service = RKTService::serviceWithCredentials(account);
    std::make_shared<AllRepositories>(
        service, countPerPage, [](const auto& page) { std::cout << ' ' << page.size(); },
        [&done](const std::optional<RKTError>& error) {
            if (error) std::cout << ' ' << error->localizedDescription();
            done = true;
        })
        ->fetch();
    pollfd waited = {RKTMainQueue::fileDescriptor(), POLLIN, 0};
    while (!done) {
        poll(&waited, 1, -1);
        RKTMainQueue::drain();
    }
    std::cout << '\n';
    service->finishTasksAndInvalidate();
}

int main() try {
    const TestServer server;
    listRepositories(RKTServiceTypeGitHub, RKTServiceCredentialTypeToken, server);
    listRepositories(RKTServiceTypeGitHubEnterprise, RKTServiceCredentialTypeToken, server);
    listRepositories(RKTServiceTypeGitLab, RKTServiceCredentialTypeToken, server);
    listRepositories(RKTServiceTypeGitLabSelfHosted, RKTServiceCredentialTypeToken, server);
    // More than the service gives.
    listRepositories(RKTServiceTypeBitbucket, RKTServiceCredentialTypeBasic, server, 200);
    listRepositories(RKTServiceTypeBitbucketServer, RKTServiceCredentialTypeToken, server);
    return 0;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
