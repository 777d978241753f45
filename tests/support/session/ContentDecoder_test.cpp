#include "support/session/ContentDecoder.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/korvogit-emulator/Compression.h"

namespace {

using rkt::decodeContent;
using rkt::DecodingProblem;

constexpr std::size_t enough = std::size_t{64} << 20;

std::string decoded(std::string body, std::string_view encoding, std::size_t maximum = enough) {
    const auto problem = decodeContent(body, encoding, maximum);
    EXPECT_FALSE(problem) << static_cast<int>(*problem);
    return body;
}

const std::string text = "the body, " + std::string(5000, 'x') + ", and its end";

TEST(ContentDecoder, LeavesABodyWithoutEncodingAlone) {
    EXPECT_EQ(decoded(text, ""), text);
    EXPECT_EQ(decoded(text, "identity"), text);
    EXPECT_EQ(decoded(text, " , identity ,"), text);
}

TEST(ContentDecoder, KnowsItsEncodingsInAnyLetterCase) {
    EXPECT_EQ(decoded(emulator::gzip(text), "GZip"), text);
    EXPECT_EQ(decoded(emulator::gzip(text), "x-gzip"), text);
    EXPECT_EQ(decoded(emulator::brotli(text), "BR"), text);
}

TEST(ContentDecoder, ReadsDeflateWithAndWithoutItsFrame) {
    const std::string framed = emulator::zlibDeflate(text);
    EXPECT_EQ(decoded(framed, "deflate"), text);
    EXPECT_EQ(decoded(framed.substr(2, framed.size() - 6), "deflate"), text);
}

TEST(ContentDecoder, UndoesTheLastEncodingFirst) {
    EXPECT_EQ(decoded(emulator::brotli(emulator::gzip(text)), "gzip, br"), text);
}

TEST(ContentDecoder, ReadsGzipMembersOneAfterAnother) {
    EXPECT_EQ(decoded(emulator::gzip("one ") + emulator::gzip("") + emulator::gzip("two"), "gzip"),
              "one two");
}

TEST(ContentDecoder, AcceptsAnEmptyBodyUnderAnyName) {
    EXPECT_EQ(decoded("", "gzip"), "");
    EXPECT_EQ(decoded("", "nobody-knows"), "");
}

TEST(ContentDecoder, HoldsTheLimitToTheByte) {
    for (const char* encoding : {"gzip", "br"}) {
        const std::string body =
            encoding == std::string_view("br") ? emulator::brotli(text) : emulator::gzip(text);
        EXPECT_EQ(decoded(body, encoding, text.size()), text);
        std::string tooLarge = body;
        EXPECT_EQ(decodeContent(tooLarge, encoding, text.size() - 1), DecodingProblem::TooLarge);
    }
}

TEST(ContentDecoder, HoldsTheLimitOverAllMembers) {
    const std::string body = emulator::gzip(text) + emulator::gzip(text);
    EXPECT_EQ(decoded(body, "gzip", 2 * text.size()).size(), 2 * text.size());
    std::string tooLarge = body;
    EXPECT_EQ(decodeContent(tooLarge, "gzip", 2 * text.size() - 1), DecodingProblem::TooLarge);
}

TEST(ContentDecoder, ManyMembersAndALyingSizeCostNoMoreThanTheirOutput) {
    // Were every member given the room that the last one promises, this would fill some terabytes.
    std::string body;
    for (int i = 0; i < 15'000; ++i) body += emulator::gzip("");
    std::string last = emulator::gzip("end");
    body += last;
    EXPECT_EQ(decoded(body, "gzip"), "end");
    const std::uint32_t promised = 15'000 * 20 * 1000;
    for (int i = 0; i < 4; ++i)
        body[body.size() - 4 + static_cast<std::size_t>(i)] =
            static_cast<char>(promised >> (8 * i));
    EXPECT_EQ(decodeContent(body, "gzip", std::size_t{256} << 20), DecodingProblem::Damaged);
}

TEST(ContentDecoder, UndoesEightEncodingsAndNoMore) {
    EXPECT_EQ(decoded(text, "identity, , , , , , , "), text);
    std::string body = text;
    EXPECT_EQ(decodeContent(body, "identity, , , , , , , , identity", enough),
              DecodingProblem::UnknownEncoding);
}

TEST(ContentDecoder, FindsEveryTruncation) {
    for (const char* encoding : {"gzip", "br"}) {
        const std::string body =
            encoding == std::string_view("br") ? emulator::brotli(text) : emulator::gzip(text);
        for (std::size_t length = 1; length < body.size(); ++length) {
            std::string cut = body.substr(0, length);
            EXPECT_EQ(decodeContent(cut, encoding, enough), DecodingProblem::Damaged) << length;
        }
    }
}

TEST(ContentDecoder, FindsADamagedByteByTheChecksum) {
    std::string body = emulator::gzip(text);
    body[body.size() - 5] ^= 1;
    EXPECT_EQ(decodeContent(body, "gzip", enough), DecodingProblem::Damaged);
}

TEST(ContentDecoder, RefusesBytesThatFollowTheEncodedOnes) {
    std::string gzip = emulator::gzip(text) + "rest";
    EXPECT_EQ(decodeContent(gzip, "gzip", enough), DecodingProblem::Damaged);
    std::string brotli = emulator::brotli(text) + "rest";
    EXPECT_EQ(decodeContent(brotli, "br", enough), DecodingProblem::Damaged);
}

TEST(ContentDecoder, NamesAnUnknownEncoding) {
    std::string body = text;
    EXPECT_EQ(decodeContent(body, "zstd", enough), DecodingProblem::UnknownEncoding);
    EXPECT_EQ(decodeContent(body, "gzip2", enough), DecodingProblem::UnknownEncoding);
}

}  // namespace
