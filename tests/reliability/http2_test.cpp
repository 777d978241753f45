// Over HTTP/2, where all requests to an origin share a connection and each answer is a stream of
// it.

#include <gtest/gtest.h>

#include <optional>

#include "support/session/Loader.h"
#include "tests/helpers/HTTP2Front.h"
#include "tests/reliability/Faults.h"
#include "tests/reliability/Operations.h"

namespace {

namespace faults = emulator::faults;
using E = RKTError;

class FaultsOverHTTP2 : public testing::TestWithParam<Operation> {
protected:
    Scene scene;
    const emulator::CertificateAuthority authority;
    HTTP2Front front{authority, scene.server.httpPort()};

    FaultsOverHTTP2() {
        scene.settings.certificateAuthorityFile = authority.file().string();
        scene.connectTo("127.0.0.1", front.port());
    }
    /// That what was asked came through the front.
    void expectHTTP2() const {
        for (const auto& request : scene.server.requests()) {
            EXPECT_TRUE(request.headers.get("Forwarded").has_value());
        }
        EXPECT_GT(scene.server.requestCount(), 0U);
    }
};

TEST_P(FaultsOverHTTP2, AStreamThatIsCutOffIsALostConnectionAndNoMoreThanThat) {
    scene.server.fault({}, faults::cutOffBody(), 1);
    Asker asker(GetParam());
    EXPECT_EQ(codeOf(asker.ask()), E::NSURLErrorNetworkConnectionLost);
    EXPECT_EQ(asker.ask(), std::nullopt);
    EXPECT_EQ(rkt::sharedLoader().exchangesUnderWay(), 0U);
    EXPECT_TRUE(asker.endsWithoutRest());
    expectHTTP2();
}

TEST_P(FaultsOverHTTP2, ABodyHasTheSameLimit) {
    constexpr std::size_t limit = 20'000;
    scene.settings.maximumBodySize = limit;
    RKTNetworkSettings::setShared(scene.settings);
    const std::string empty = GetParam() == Operation::List ? "[]" : "{}";
    Asker asker(GetParam());
    for (const std::size_t size : {limit, limit + 1}) {
        scene.server.clearScripts();
        scene.server.script(
            {}, emulator::jsonAnswer(200, empty + std::string(size - empty.size(), ' ')));
        const std::int64_t tooLong = E::NSURLErrorDataLengthExceedsMaximum;
        EXPECT_EQ(codeOf(asker.ask()), size > limit ? tooLong : 0);
    }
    expectHTTP2();
}

INSTANTIATE_TEST_SUITE_P(, FaultsOverHTTP2, testing::ValuesIn(allOperations),
                         [](const auto& tested) { return std::string(nameOf(tested.param)); });

}  // namespace
