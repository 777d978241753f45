// Ways to a server that are not straight.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/reliability/Faults.h"
#include "tests/reliability/Interposed.h"
#include "tests/reliability/Operations.h"

namespace {

using emulator::CertificateAuthority;
using emulator::Leaf;
using E = RKTError;

// Several addresses
// ------------------------------------------------------------------------------------------------

class TwoAddresses : public testing::TestWithParam<Operation> {
protected:
    Scene scene;

    void connectToBoth() {
        Names::set("both.test", {"127.0.0.2", "127.0.0.1"});
        scene.connectTo("both.test", scene.server.httpsPort());
    }
    static std::int64_t ask() { return codeOf(Asker(GetParam()).ask()); }
};

TEST_P(TwoAddresses, TheSecondIsTakenWhenTheFirstRefuses) {
    connectToBoth();
    EXPECT_EQ(ask(), 0);
}

TEST_P(TwoAddresses, TheSecondIsTakenWhenTheFirstIsSilent) {
    Gateway silent("127.0.0.2", scene.server.httpsPort());
    silent.beSilent();
    scene.settings.timeoutIntervalForRequest = std::chrono::seconds(2);  // half of it for the first
    connectToBoth();
    EXPECT_EQ(ask(), 0);
}

TEST_P(TwoAddresses, NeitherCanBeConnectedTo) {
    scene.server.stop();
    connectToBoth();
    EXPECT_EQ(ask(), E::NSURLErrorCannotConnectToHost);
}

INSTANTIATE_TEST_SUITE_P(, TwoAddresses, testing::ValuesIn(allOperations),
                         [](const auto& tested) { return std::string(nameOf(tested.param)); });

// A proxy that is itself reached by TLS
// ------------------------------------------------------------------------------------------------

class SecureProxy : public testing::TestWithParam<Operation> {
protected:
    Scene scene;
    const CertificateAuthority company;
    std::filesystem::path bothAuthorities = scene.server.caFile().parent_path() / "both.pem";

    SecureProxy() {
        const auto pem = [](const std::filesystem::path& file) {
            std::ifstream stream(file);
            return std::string(std::istreambuf_iterator<char>(stream), {});
        };
        std::ofstream(bothAuthorities) << pem(scene.server.caFile()) << company.pem();
    }
    ~SecureProxy() override { std::filesystem::remove(bothAuthorities); }

    std::int64_t askThrough(const emulator::Identity& identity,
                            const std::filesystem::path& trust) {
        scene.gateway.leadTo(scene.proxy.port(), identity);
        scene.settings.certificateAuthorityFile = trust.string();
        scene.goThroughProxy(scene.gateway.port(), "https");
        return codeOf(Asker(GetParam()).ask());
    }
    void expectThatNothingCameThrough() const {
        EXPECT_TRUE(scene.proxy.requests().empty());
        EXPECT_EQ(scene.server.requestCount(), 0U);
    }
};

TEST_P(SecureProxy, OfAPrivateAuthorityIsGoneThrough) {
    EXPECT_EQ(askThrough(company.makeLeaf(Leaf::Valid), bothAuthorities), 0);
    ASSERT_EQ(scene.proxy.requests().size(), 1U);
    const auto request = scene.proxy.requests().front();
    EXPECT_EQ(request.method, "CONNECT");
    EXPECT_FALSE(request.headers.get("Authorization"));
}

TEST_P(SecureProxy, OfAnUnknownAuthorityIsRefused) {
    EXPECT_EQ(askThrough(company.makeLeaf(Leaf::Valid), scene.server.caFile()),
              E::NSURLErrorServerCertificateHasUnknownRoot);
    expectThatNothingCameThrough();
}

TEST_P(SecureProxy, OfAnotherNameIsRefused) {
    EXPECT_EQ(askThrough(company.makeLeaf(Leaf::WrongName), bothAuthorities),
              E::NSURLErrorServerCertificateUntrusted);
    expectThatNothingCameThrough();
}

TEST_P(SecureProxy, WhoseCertificateHasExpiredIsRefused) {
    EXPECT_EQ(askThrough(company.makeLeaf(Leaf::Expired), bothAuthorities),
              E::NSURLErrorServerCertificateHasBadDate);
    expectThatNothingCameThrough();
}

INSTANTIATE_TEST_SUITE_P(, SecureProxy, testing::ValuesIn(allOperations),
                         [](const auto& tested) { return std::string(nameOf(tested.param)); });

// A connection that was used before
// ------------------------------------------------------------------------------------------------

class UsedConnection : public testing::Test {
protected:
    Scene scene;

    /// Asks once well, then meets that fault once.
    std::int64_t askTwice(Operation operation, const emulator::Fault& fault) {
        const Asker asker(operation);
        EXPECT_EQ(asker.ask(), std::nullopt);
        scene.server.fault({}, fault, 1);
        return codeOf(asker.ask());
    }
};

TEST_F(UsedConnection, ThatEndsWithoutAnAnswerIsReplacedForWhatOnlyReads) {
    for (const auto operation : {Operation::Validate, Operation::List}) {
        EXPECT_EQ(askTwice(operation, emulator::faults::closeAfterRequest()), 0);
    }
    EXPECT_EQ(scene.server.requestCount(), 6U);
}

// A provider may take back the tokens of a code that comes twice.
TEST_F(UsedConnection, NeverHasATokenRequestSentTwice) {
    for (const auto& fault :
         {emulator::faults::closeAfterRequest(), emulator::faults::resetAfterRequest()}) {
        scene.server.forgetRequests();
        EXPECT_EQ(askTwice(Operation::TokenExchange, fault), E::NSURLErrorNetworkConnectionLost);
        EXPECT_EQ(scene.server.requestCount(), 2U);
    }
}

// Settings that are put right
// ------------------------------------------------------------------------------------------------

class SilentWay : public testing::TestWithParam<Operation> {
protected:
    Scene scene;

    /// What comes of an operation that takes the way of now, while another stays in the silence
    /// that `take` leads to.
    template <class Take, class TakeAnother>
    std::int64_t askBeside(Take take, TakeAnother takeAnother) {
        scene.gateway.beSilent();
        take(scene.gateway.port());
        const Asker stuck(GetParam());
        const auto calls = std::make_shared<Asker::Calls>();
        const auto task = stuck.start(calls);
        EXPECT_TRUE(scene.gateway.waitForClient());
        takeAnother();
        const auto code = codeOf(Asker(GetParam()).ask());
        EXPECT_EQ(task->state(), RKTURLSessionDataTask::State::Running);
        task->cancel();
        EXPECT_EQ(codeOf(stuck.outcome(*task, calls)), E::NSURLErrorCancelled);
        return code;
    }
};

TEST_P(SilentWay, ToAServerIsNotWaitedForOnAnother) {
    const auto to = [&](std::uint16_t port) { scene.connectTo("127.0.0.1", port); };
    EXPECT_EQ(askBeside(to, [&] { to(scene.server.httpsPort()); }), 0);
}

TEST_P(SilentWay, ThroughAProxyIsNotWaitedForThroughAnother) {
    const auto through = [&](std::uint16_t port) { scene.goThroughProxy(port); };
    EXPECT_EQ(askBeside(through,
                        [&] {
                            scene.settings = settingsFor(scene.server);
                            through(scene.proxy.port());
                        }),
              0);
}

INSTANTIATE_TEST_SUITE_P(, SilentWay, testing::ValuesIn(allOperations),
                         [](const auto& tested) { return std::string(nameOf(tested.param)); });

}  // namespace
