// That each property may be read by one thread while another sets it. Without a sanitizer a
// property that tears may escape; the thread sanitizer sees every access that is not guarded.

#include "KorvoGitService/RKTRecord.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <thread>

#include "KorvoGitService/RKTServiceCredentials.h"
#include "KorvoGitService/RKTServiceRepository.h"
#include "KorvoGitService/RKTServiceRequest.h"

namespace {

constexpr int rounds = 500;

/// What is read is one of the two values, whichever was there last.
template <class Record, class Getter, class Setter, class Value>
void expectAtomic(Record& record, Getter get, Setter set, const Value& one, const Value& other) {
    std::invoke(set, record, one);
    std::latch start(2);
    const std::jthread writer([&] {
        start.arrive_and_wait();
        for (int round = 0; round < rounds; ++round) {
            std::invoke(set, record, other);
            std::invoke(set, record, one);
        }
    });
    start.arrive_and_wait();
    for (int round = 0; round < 2 * rounds; ++round) {
        const auto read = std::invoke(get, record);
        ASSERT_TRUE(read == one || read == other);
    }
}

// Longer than what a std::string holds in itself.
const std::optional<std::string> shortText(std::string(40, 'a'));
const std::optional<std::string> longText(std::string(400, 'b'));
const std::optional<RKTNumber> small(RKTNumber(1));
const std::optional<RKTNumber> half(RKTNumber(0.5));

std::optional<RKTURL> url(const std::optional<std::string>& text) {
    return RKTURL::URLWithString("https://host/" + text.value());
}

TEST(AtomicProperties, OfARequest) {
    using R = RKTRepositoriesRequest;
    R request;
    expectAtomic(request, &R::sortKey, &R::setSortKey, RKTServiceSortKeyName,
                 RKTServiceSortKeyUpdated);
    expectAtomic(request, &R::sortDirection, &R::setSortDirection, RKTServiceSortDirectionAscending,
                 RKTServiceSortDirectionDescending);
    expectAtomic(request, &R::page, &R::setPage, small, half);
    expectAtomic(request, &R::countPerPage, &R::setCountPerPage, small, half);
    expectAtomic(request, &R::state, &R::setState, shortText, longText);
    expectAtomic(request, &R::visibility, &R::setVisibility, shortText, longText);
}

TEST(AtomicProperties, OfAResult) {
    using R = RKTServiceArrayResult;
    R result;
    expectAtomic(result, &R::error, &R::setError, std::optional(RKTError(*shortText, 1)),
                 std::optional(RKTError(*longText, 2)));
    const R::LinkRelations first{{"first", url(shortText).value()}};
    const R::LinkRelations both{{"first", url(longText).value()}, {"next", url(longText).value()}};
    expectAtomic(result, &R::linkRelations, &R::setLinkRelations, std::optional(first),
                 std::optional(both));
    const auto repository = std::make_shared<RKTServiceRepository>();
    expectAtomic(result, &R::results, &R::setResults, std::optional(R::Results(3, repository)),
                 std::optional(R::Results(30, repository)));
    expectAtomic(result, &R::page, &R::setPage, small, half);
    expectAtomic(result, &R::totalNumberOfPages, &R::setTotalNumberOfPages, small, half);
}

TEST(AtomicProperties, OfAResultOfOneObject) {
    RKTServiceObjectResult result;
    expectAtomic(
        result, [](const auto& held) { return std::any_cast<std::string>(held.result()); },
        &RKTServiceObjectResult::setResult, *shortText, *longText);
}

TEST(AtomicProperties, OfARepository) {
    using R = RKTServiceRepository;
    R repository;
    expectAtomic(repository, &R::isFork, &R::setIsFork, small, half);
    expectAtomic(repository, &R::numberOfStars, &R::setNumberOfStars, small, half);
    expectAtomic(repository, &R::numberOfForks, &R::setNumberOfForks, small, half);
    expectAtomic(repository, &R::identifier, &R::setIdentifier,
                 std::optional(RKTServiceIdentifier(1)),
                 std::optional(RKTServiceIdentifier(*longText)));
    expectAtomic(repository, &R::name, &R::setName, shortText, longText);
    expectAtomic(repository, &R::webURL, &R::setWebURL, url(shortText), url(longText));
}

/// `look` gives the credentials whose property is read: those that change, or what is made of them.
template <class Look>
void expectAtomicCredentials(Look look) {
    using C = RKTServiceCredentials;
    const auto expect = [look](auto get, auto set, const auto& one, const auto& other) {
        C credentials("GitHub", "Token");
        expectAtomic(
            credentials, [=](const C& read) { return std::invoke(get, *look(read)); }, set, one,
            other);
    };
    expect(&C::serviceType, &C::setServiceType, shortText, longText);
    expect(&C::credentialType, &C::setCredentialType, shortText, longText);
    expect(&C::URL, &C::setURL, url(shortText), url(longText));
    expect(&C::user, &C::setUser, shortText, longText);
    expect(&C::token, &C::setToken, shortText, longText);
    expect(&C::refreshToken, &C::setRefreshToken, shortText, longText);
    expect(&C::expiryDate, &C::setExpiryDate, std::optional(RKTDateDistantFuture()),
           std::optional(RKTDate()));
    expect(&C::OAuthClientID, &C::setOAuthClientID, shortText, longText);
    expect(&C::OAuthClientSecret, &C::setOAuthClientSecret, shortText, longText);
    expect(&C::OAuthCode, &C::setOAuthCode, shortText, longText);
    expect(&C::OAuthScopes, &C::setOAuthScopes,
           std::optional(std::vector<std::string>(2, *longText)),
           std::optional(std::vector<std::string>(20, *shortText)));
    expect(&C::OAuthState, &C::setOAuthState, shortText, longText);
    expect(&C::OAuthRedirectURL, &C::setOAuthRedirectURL, url(shortText), url(longText));
}

TEST(AtomicProperties, OfCredentials) {
    expectAtomicCredentials([](const RKTServiceCredentials& original) { return &original; });
}

TEST(AtomicProperties, OfCredentialsThatAreCopied) {
    expectAtomicCredentials(
        [](const RKTServiceCredentials& original) { return original.copyWithZone(); });
}

}  // namespace
