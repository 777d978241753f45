// Answers that break off, lead elsewhere, come too late or are not waited for, at every adapter.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/helpers/EveryAdapter.h"

namespace {

namespace faults = emulator::faults;
using emulator::HoldStage;
using testing::Each;
using testing::Optional;
using testing::SizeIs;

class TroubledTransfers : public EveryAdapter {
protected:
    std::vector<std::optional<std::string>> authorizationsSentTo(const std::string& host) const {
        std::vector<std::optional<std::string>> sent;
        for (const auto& request : origin.server.requests({.host = host})) {
            sent.push_back(request.headers.get("Authorization"));
        }
        return sent;
    }
};

TEST_P(TroubledTransfers, DoNotHappenByThemselves) {
    const auto untroubled = outcome();
    EXPECT_EQ(untroubled.validation, std::nullopt);
    EXPECT_EQ(untroubled.listing->error(), std::nullopt);
    EXPECT_FALSE(resultsOf(*untroubled.listing).empty());
}

TEST_P(TroubledTransfers, LoseTheConnectionInTheBody) {
    expectTransportError(outcomeOf(faults::cutOffBody()),
                         RKTError::NSURLErrorNetworkConnectionLost);
}

TEST_P(TroubledTransfers, LoseTheConnectionBeforeTheLastChunk) {
    expectTransportError(outcomeOf(faults::cutOffChunks()),
                         RKTError::NSURLErrorNetworkConnectionLost);
}

TEST_P(TroubledTransfers, CannotDecodeACutOffBody) {
    expectTransportError(outcomeOf(faults::truncatedGzip()),
                         RKTError::NSURLErrorCannotDecodeRawData);
}

TEST_P(TroubledTransfers, FollowARedirectWithTheAuthorizationAtTheSameOrigin) {
    const auto redirected = outcomeOf(faults::redirectOnce(301));
    EXPECT_EQ(redirected.validation, std::nullopt);
    EXPECT_EQ(redirected.listing->error(), std::nullopt);
    const auto requests = origin.server.requests();
    ASSERT_THAT(requests, SizeIs(4));
    for (const auto& request : requests) {
        EXPECT_EQ(request.headers.get("Authorization"),
                  requests.front().headers.get("Authorization"));
        EXPECT_TRUE(request.headers.get("Authorization").has_value());
    }
}

TEST_P(TroubledTransfers, SendNoAuthorizationToTheHostOfARedirect) {
    origin.server.script({.host = "bitbucket.org"}, emulator::jsonAnswer(200, "{}"));
    origin.server.fault({.also = [](const auto& r) { return r.host() != "bitbucket.org"; }},
                        faults::redirectTo(302, "https://bitbucket.org/elsewhere"));
    const auto redirected = outcome();
    EXPECT_EQ(redirected.validation, std::nullopt);
    EXPECT_EQ(redirected.listing->error(), std::nullopt);
    EXPECT_THAT(authorizationsSentTo("bitbucket.org"),
                testing::ElementsAre(std::nullopt, std::nullopt));
}

TEST_P(TroubledTransfers, DoNotFollowARedirectOutOfTLS) {
    expectTransportError(outcomeOf(faults::redirectToHttp()),
                         RKTError::NSURLErrorBadServerResponse);
}

TEST_P(TroubledTransfers, DoNotFollowRedirectsForEver) {
    expectTransportError(outcomeOf(faults::redirectLoop()),
                         RKTError::NSURLErrorHTTPTooManyRedirects);
}

TEST_P(TroubledTransfers, TakeARedirectThatLeadsNowhereForAFailure) {
    expectStatusError(outcomeOf(faults::redirectWithoutLocation()), 302);
}

class LateAnswers : public TroubledTransfers {
protected:
    /// So short that a test of it takes no time, and longer than the emulator needs for a byte.
    LateAnswers() {
        auto settings = RKTNetworkSettings::shared();
        settings.timeoutIntervalForRequest = std::chrono::milliseconds(100);
        RKTNetworkSettings::setShared(settings);
    }
};

TEST_P(LateAnswers, TimeOutWhenNothingComes) {
    expectTransportError(outcomeOf(faults::silenceAfterRequest()), RKTError::NSURLErrorTimedOut);
}

TEST_P(LateAnswers, TimeOutInTheBody) {
    expectTransportError(outcomeOf(faults::silenceInBody()), RKTError::NSURLErrorTimedOut);
}

class CancelledTransfers : public TroubledTransfers {
protected:
    /// Starts both operations, cancels them when their answers have come so far, lets the answers
    /// go on, and expects each handler to have run once.
    void expectCancelled(HoldStage stage) {
        auto hold = origin.server.hold({}, stage);
        const auto service = this->service();
        Awaited<std::optional<RKTError>> validations;
        Awaited<std::shared_ptr<RKTServiceArrayResult>> listings;
        const auto validation = service->validateCredentialsWithCompletionHandler(
            [&](auto error) { validations.put(std::move(error)); });
        const auto listing = service->fetchRepositoriesWithRequest(
            nullptr, [&](auto result) { listings.put(std::move(result)); });
        ASSERT_TRUE(hold.waitUntilReached(2));
        validation->cancel();
        listing->cancel();
        const Outcome outcome{validations.first(), listings.first()};
        hold.release();
        validation->cancel();
        drain(*service->URLSession()->delegateQueue());
        expectTransportError(outcome, RKTError::NSURLErrorCancelled);
        EXPECT_EQ(validations.count(), 1U);
        EXPECT_EQ(listings.count(), 1U);
    }
};

TEST_P(CancelledTransfers, EndBeforeTheAnswer) {
    expectCancelled(HoldStage::BeforeHeaders);
}

TEST_P(CancelledTransfers, EndBetweenHeadAndBody) {
    expectCancelled(HoldStage::AfterHeaders);
}

TEST_P(CancelledTransfers, EndInTheBody) {
    expectCancelled(HoldStage::InBody);
}

TEST_P(CancelledTransfers, EndWithTheService) {
    auto hold = origin.server.hold({});
    const auto service = this->service();
    Awaited<std::optional<RKTError>> validations;
    service->validateCredentialsWithCompletionHandler(
        [&](auto error) { validations.put(std::move(error)); });
    ASSERT_TRUE(hold.waitUntilReached());
    service->invalidateAndCancel();
    EXPECT_EQ(validations.first()->code(), RKTError::NSURLErrorCancelled);
    const Outcome afterwards = {validate(*service), list(*service)};
    expectTransportError(afterwards, RKTError::NSURLErrorCancelled);
    EXPECT_EQ(origin.server.requestCount(), 1U);
}

INSTANTIATE_TEST_SUITE_P(, TroubledTransfers, testing::ValuesIn(adaptersUnderTest), adapterName);
INSTANTIATE_TEST_SUITE_P(, LateAnswers, testing::ValuesIn(adaptersUnderTest), adapterName);
INSTANTIATE_TEST_SUITE_P(, CancelledTransfers, testing::ValuesIn(adaptersUnderTest), adapterName);

}  // namespace
