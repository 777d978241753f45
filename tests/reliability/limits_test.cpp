// What is bounded, at the bound and one past it. The page has the same numbers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/LinkHeader.h"
#include "support/JSONParsers.h"
#include "support/curl/AnswerReader.h"
#include "support/curl/CurlSessionMemory.h"
#include "support/session/Redirect.h"
#include "tests/reliability/Faults.h"
#include "tests/reliability/Operations.h"
#include "tests/reliability/Page.h"

namespace {

using emulator::Answer;
using emulator::RawAnswer;

class Limits : public testing::TestWithParam<Operation> {
protected:
    Scene scene;

    static std::string ask() {
        const auto error = Asker(GetParam()).ask();
        return error ? error->domain() + " " + std::to_string(error->code()) : "success";
    }
    std::string askFor(const emulator::Reply& reply) {
        scene.server.clearScripts();
        scene.server.script({}, reply);
        return ask();
    }
    static bool lists() { return GetParam() == Operation::List; }
    /// JSON that the operation accepts, of that many bytes.
    static std::string body(std::size_t size) {
        const std::string empty = lists() ? "[]" : "{}";
        return empty + std::string(size - empty.size(), ' ');
    }
};

TEST_P(Limits, OfBodies) {
    constexpr std::size_t limit = 20'000;
    scene.settings.maximumBodySize = limit;
    RKTNetworkSettings::setShared(scene.settings);
    for (const bool packed : {false, true}) {
        Answer answer = emulator::jsonAnswer(200, body(limit));
        answer.compressible = packed;
        EXPECT_EQ(askFor(answer), "success");
        answer.body = body(limit + 1);
        EXPECT_EQ(askFor(answer), "NSURLErrorDomain -1103");
    }
}

/// An answer whose header lines have that many bytes, interim ones included.
RawAnswer answerWithHeaders(std::size_t size, const std::string& content) {
    const std::string interim = "HTTP/1.1 103 Early Hints\r\nX-Hint: a\r\n\r\n";
    const std::string head =
        "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
        std::to_string(content.size()) + "\r\n";
    const std::string end = "\r\n";
    std::string filling;
    for (auto left = size - interim.size() - head.size() - end.size(); left > 0;) {
        const auto line = left < 2000 ? left : 1000;  // what is left is never too short for a line
        filling += "X-Fill: " + std::string(line - 10, 'x') + "\r\n";
        left -= line;
    }
    return RawAnswer().send(interim + head + filling + end + content).close();
}

TEST_P(Limits, OfHeaders) {
    EXPECT_EQ(askFor(answerWithHeaders(rkt::maximumHeaderBytes, body(2))), "success");
    EXPECT_EQ(askFor(answerWithHeaders(rkt::maximumHeaderBytes + 1, body(2))),
              "NSURLErrorDomain -1011");
}

TEST_P(Limits, OfRedirects) {
    const auto redirecting = [](int hops) {
        return [hops](const emulator::Request& request) -> emulator::Reply {
            const int done =
                request.query.starts_with("hop=") ? std::stoi(request.query.substr(4)) : 0;
            if (done == hops) return emulator::jsonAnswer(200, body(2));
            Answer answer{.status = 307};
            answer.headers.add("Location", request.path + "?hop=" + std::to_string(done + 1));
            return answer;
        };
    };
    for (const auto& [hops, outcome] :
         {std::pair(rkt::maximumRedirects, "success"),
          std::pair(rkt::maximumRedirects + 1, "NSURLErrorDomain -1007")}) {
        scene.server.clearScripts();
        scene.server.script({}, redirecting(hops));
        EXPECT_EQ(ask(), outcome);
    }
}

TEST_P(Limits, OfLevelsOfJSON) {
    const auto nested = [](std::size_t levels) {
        const auto arrays = levels - 1;
        const std::string inside = std::string(arrays, '[') + std::string(arrays, ']');
        return emulator::jsonAnswer(200, lists() ? "[" + inside + "]" : R"({"a":)" + inside + "}");
    };
    EXPECT_EQ(askFor(nested(rkt::jsonDepthLimit)), "success");
    EXPECT_EQ(askFor(nested(rkt::jsonDepthLimit + 1)), "NSCocoaErrorDomain 3840");
}

INSTANTIATE_TEST_SUITE_P(, Limits, testing::ValuesIn(allOperations),
                         [](const auto& tested) { return std::string(nameOf(tested.param)); });

TEST(LimitOfLinks, IsOfThoseThatAreRead) {
    SharedOrigin origin;
    for (const auto count : {rkt::maximumLinkCount, rkt::maximumLinkCount + 1}) {
        std::string links;
        for (std::size_t link = 1; link <= count; ++link) {
            links +=
                (link > 1 ? ", " : "") + ("<https://h/>; rel=\"" + std::to_string(link) + "\"");
        }
        auto answer = emulator::jsonAnswer(200, "[]");
        answer.headers.add("Link", links);
        origin.server.clearScripts();
        origin.server.script({}, answer);
        const auto result = list(*serviceWith(credentialsFor("GitHub")));
        EXPECT_EQ(result->error(), std::nullopt);
        const auto relations = result->linkRelations().value();
        EXPECT_EQ(relations.size(), rkt::maximumLinkCount);
        EXPECT_TRUE(relations.contains(std::to_string(rkt::maximumLinkCount)));
    }
}

TEST(ReliabilityPage, HasTheLimitsThatAreTested) {
    const std::vector<std::vector<std::string>> limits = {
        {"Body", std::to_string(RKTNetworkSettings().maximumBodySize) + " bytes",
         "NSURLErrorDomain -1103"},
        {"Headers", std::to_string(rkt::maximumHeaderBytes) + " bytes", "NSURLErrorDomain -1011"},
        {"Cookies", std::to_string(rkt::maximumCookies), "success"},
        {"Redirects", std::to_string(rkt::maximumRedirects), "NSURLErrorDomain -1007"},
        {"Depth of JSON", std::to_string(rkt::jsonDepthLimit) + " levels",
         "NSCocoaErrorDomain 3840"},
        {"Links of a Link header", std::to_string(rkt::maximumLinkCount), "success"},
    };
    auto documented = tableOfPage("Limits");
    for (auto& cells : documented) {
        ASSERT_EQ(cells.size(), 4U) << testing::PrintToString(cells);
        cells.pop_back();
    }
    EXPECT_THAT(documented, testing::ElementsAreArray(limits));
}

}  // namespace
