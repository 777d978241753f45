#include "tools/korvogit-emulator/Compression.h"

#include <brotli/decode.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

TEST(EmulatorCompression, UnpacksWhatItPacked) {
    for (const std::string& text : {std::string(), std::string("x"), std::string(300'000, 'y')}) {
        EXPECT_EQ(emulator::gunzip(emulator::gzip(text)), text);
    }
}

TEST(EmulatorCompression, RefusesAMemberThatIsCutShort) {
    auto bytes = emulator::gzip("some text");
    bytes.pop_back();
    EXPECT_THROW(emulator::gunzip(bytes), std::runtime_error);
}

TEST(EmulatorCompression, MakesABombThatIsAValidMember) {
    const auto bomb = emulator::gzipBomb(3);
    EXPECT_LT(bomb.size(), 10'000U);
    EXPECT_EQ(emulator::gunzip(bomb), std::string(3 << 20, ' '));
}

TEST(EmulatorCompression, WritesBrotli) {
    const std::string text(100'000, 'z');
    const auto packed = emulator::brotli(text);
    std::vector<std::uint8_t> unpacked(200'000);
    std::size_t size = unpacked.size();
    ASSERT_EQ(
        BrotliDecoderDecompress(packed.size(), reinterpret_cast<const std::uint8_t*>(packed.data()),
                                &size, unpacked.data()),
        BROTLI_DECODER_RESULT_SUCCESS);
    EXPECT_EQ(std::string(unpacked.begin(), unpacked.begin() + static_cast<long>(size)), text);
}

TEST(EmulatorCompression, ReadsAcceptEncoding) {
    EXPECT_TRUE(emulator::acceptsGzip("gzip"));
    EXPECT_TRUE(emulator::acceptsGzip("br;q=1.0, GZIP;q=0.5"));
    EXPECT_TRUE(emulator::acceptsGzip("deflate, *"));
    EXPECT_FALSE(emulator::acceptsGzip(""));
    EXPECT_FALSE(emulator::acceptsGzip("deflate, br"));
    EXPECT_FALSE(emulator::acceptsGzip("gzip; q=0.000, *"));
    EXPECT_FALSE(emulator::acceptsGzip("*;q=0"));
    EXPECT_FALSE(emulator::acceptsGzip("x-gzip"));
}

}  // namespace
