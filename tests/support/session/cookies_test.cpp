// Cookies that servers set: a session's, in memory, and not too many.

#include <gtest/gtest.h>

#include <string>

#include "support/curl/CurlSessionMemory.h"
#include "tests/helpers/Loading.h"

namespace {

class Cookies : public testing::Test {
protected:
    // libcurl sends a hundred and fifty, those with the longest names first.
    static constexpr auto keepsake = "longest-name-of-all-of-these-cookies";

    Cookies() { load(std::string(keepsake) + "=1"); }

    std::string sentNow() {
        load("");
        return origin.server.requests().back().headers.get("Cookie").value_or("");
    }
    static std::string cookie(std::size_t number, std::size_t size = 1) {
        return "c" + std::to_string(number) + "=" + std::string(size, 'v');
    }
    /// Answers with that many cookies each; libcurl takes no more than 50 from one.
    void receive(std::size_t answers, std::size_t each, std::size_t size) {
        for (std::size_t answer = 0; answer < answers; ++answer) {
            emulator::Answer setting;
            for (std::size_t i = 0; i < each; ++i)
                setting.headers.add("Set-Cookie", cookie(answer * each + i, size));
            load(setting);
        }
    }
    /// As many bytes of header lines as cookies are counted after, and a few more.
    void beCounted() {
        emulator::Answer filled;
        for (std::size_t bytes = 0; bytes <= rkt::headerBytesBetweenCounts; bytes += 1000)
            filled.headers.add("X-Fill", std::string(1000, 'x'));
        load(filled);
    }

private:
    void load(const std::string& setCookie) {
        emulator::Answer answer;
        if (!setCookie.empty()) answer.headers.add("Set-Cookie", setCookie);
        load(answer);
    }
    void load(const emulator::Answer& answer) {
        origin.server.clearScripts();
        origin.server.script({}, answer);
        const auto loaded = std::make_shared<Awaited<Loaded>>();
        Origin::task(*session_, requestTo(origin.url("/x")), loaded)->resume();
        ASSERT_EQ(loaded->first().status(), 200);
    }

    Origin origin;
    const std::shared_ptr<RKTURLSession> session_ = origin.session();
};

TEST_F(Cookies, AsManyAsTheLimitAreKept) {
    receive(13, 23, 1);  // 299 besides the keepsake
    beCounted();
    EXPECT_NE(sentNow().find(keepsake), std::string::npos);
}

TEST_F(Cookies, MoreThanTheLimitAreForgotten) {
    receive(12, 25, 1);
    beCounted();
    EXPECT_EQ(sentNow(), "");
}

TEST_F(Cookies, MoreBytesThanTheLimitAreForgotten) {
    constexpr std::size_t size = 4000;
    receive(rkt::maximumCookieBytes / size / 10 + 1, 10, size);
    beCounted();
    EXPECT_EQ(sentNow(), "");
}

TEST_F(Cookies, OneThatIsSetAgainAndAgainCountsOnce) {
    for (int i = 0; i < 10; ++i) {
        receive(1, 40, 200);
        beCounted();
    }
    EXPECT_NE(sentNow().find(keepsake), std::string::npos);
}

}  // namespace
