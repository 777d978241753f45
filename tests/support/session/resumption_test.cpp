// What a session remembers of TLS: its next connection to a server resumes, as far as the settings
// are the same.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/curl/TLSResumption.h"
#include "tests/helpers/HTTP2Front.h"
#include "tests/helpers/Services.h"

namespace {

class Resumption : public testing::Test {
protected:
    SharedOrigin origin;

    Resumption() {
        auto answer = emulator::textAnswer(200, "done");
        answer.keepAlive = false;  // each request has a connection of its own
        origin.server.script({}, answer);
    }

    Loaded load(RKTURLSession& session, const RKTURLRequest& request) const {
        const auto loaded = std::make_shared<Awaited<Loaded>>();
        Origin::task(session, request, loaded)->resume();
        return loaded->first();
    }
    Loaded load(RKTURLSession& session) const {
        return load(session, requestTo("https://api.github.com/x"));
    }
    bool lastWasResumed() const { return origin.server.requests().back().resumed; }
};

TEST_F(Resumption, IsForTheConnectionsOfOneSession) {
    const auto session = origin.session();
    ASSERT_EQ(load(*session).status(), 200);
    EXPECT_FALSE(lastWasResumed());
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(load(*session).status(), 200);
        EXPECT_TRUE(lastWasResumed());
    }
    EXPECT_EQ(origin.server.acceptedConnections(), 4U);
}

TEST_F(Resumption, EndsAfterSomeConnectionsSoThatTheCertificateIsCheckedAgain) {
    const auto session = origin.session();
    for (int round = 0; round < 2; ++round) {
        for (int resumptions = 0; resumptions <= rkt::maximumResumptions; ++resumptions) {
            ASSERT_EQ(load(*session).status(), 200);
            EXPECT_EQ(lastWasResumed(), resumptions > 0) << resumptions;
        }
    }
}

TEST_F(Resumption, DoesNotTieOneSessionToAnother) {
    ASSERT_EQ(load(*origin.session()).status(), 200);
    ASSERT_EQ(load(*origin.session()).status(), 200);
    EXPECT_FALSE(lastWasResumed());
}

TEST_F(Resumption, IsForRequestsThatShareNoConnectionToo) {
    const auto session = origin.session();
    auto request = requestTo("https://api.github.com/x");
    request.setHTTPMethod("POST");
    ASSERT_EQ(load(*session, request).status(), 200);
    ASSERT_EQ(load(*session, request).status(), 200);
    EXPECT_TRUE(lastWasResumed());
}

TEST_F(Resumption, IsForHTTP2Too) {
    const emulator::CertificateAuthority authority;
    const HTTP2Front front(authority, origin.server.httpPort());
    origin.settings.certificateAuthorityFile = authority.file().string();
    for (auto& mapping : origin.settings.hostMappings) mapping.addressPort = front.port();
    const auto session = origin.session();
    auto request = requestTo("https://api.github.com/x");
    request.setHTTPMethod("POST");  // has a connection of its own, which is closed afterwards
    for (int i = 0; i < 3; ++i) ASSERT_EQ(load(*session, request).status(), 200);
    EXPECT_THAT(front.resumptions(3), testing::ElementsAre(false, true, true));
}

TEST_F(Resumption, DoesNotOutliveTheTrustInTheAuthority) {
    const auto session = RKTURLSession::sharedSession();
    ASSERT_EQ(load(*session).status(), 200);

    const emulator::CertificateAuthority other;
    auto settings = origin.settings;
    settings.certificateAuthorityFile = other.file().string();
    RKTNetworkSettings::setShared(settings);
    EXPECT_EQ(load(*session).code(), RKTError::NSURLErrorServerCertificateHasUnknownRoot);

    RKTNetworkSettings::setShared(origin.settings);
    ASSERT_EQ(load(*session).status(), 200);
    EXPECT_TRUE(lastWasResumed());
}

}  // namespace
