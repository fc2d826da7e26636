#include "nvcode2/nvblit.h"

#include <cstdint>
#include <functional>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/nvimage.h"

namespace {

using testing::ElementsAre;

using Bytes = std::vector<std::uint8_t>;

TEST(Blit, Converts555WithItsBlueRule) {
    constexpr struct {
        unsigned pixel;
        std::uint8_t red, green, blue;
    } km_Cases[] = {
        {0x7FFF, 255, 255, 255}, {0x001F, 0, 0, 0xFF}, {0x0010, 0, 0, 0x80}, {0x0013, 0, 0, 0x9B},
        {0x4000, 0x84, 0, 0},    {0x0200, 0, 0x84, 0}, {0x8000, 0, 0, 0},    {0x0001, 0, 0, 9},
    };
    for (const auto& test : km_Cases) {
        const Bytes source{static_cast<std::uint8_t>(test.pixel), static_cast<std::uint8_t>(test.pixel >> 8)};
        Bytes dest(4, 77);
        NvConvert555ToRGB(source.data(), 2, dest.data(), 4, 1, 1, 4);
        EXPECT_THAT(dest, ElementsAre(test.red, test.green, test.blue, 77)) << std::hex << test.pixel;
    }
    EXPECT_DEATH(NvConvert555ToRGB(nullptr, 0, nullptr, 0, 0, 0, 2), "outPixelBytes >= 3");
}

/** A converter of rows, and two rows of its source and result with a byte between the rows. */
struct RowCase {
    const char* what;
    std::function<void(const std::uint8_t*, std::uint32_t, std::uint8_t*, std::uint32_t, std::uint32_t,
                       std::uint32_t)>
        convert;
    std::uint32_t width, sourceRowBytes, destRowBytes;
    Bytes source, expected;
};

const RowCase km_RowCases[] = {
    {"4 bytes to 3",
     NvConvert4BytesTo3,
     2,
     9,
     7,
     {1, 2, 3, 4, 5, 6, 7, 8, 0, 11, 12, 13, 14, 15, 16, 17, 18, 0},
     {1, 2, 3, 5, 6, 7, 77, 11, 12, 13, 15, 16, 17, 77}},
    {"16 bits to 8",
     NvConvert16BitTo8,
     2,
     5,
     3,
     {0xFF, 1, 0xFF, 2, 0, 0xFF, 3, 0xFF, 4, 0},
     {1, 2, 77, 3, 4, 77}},
    {"4 bits to 8", NvConvert4BitTo8, 3, 3, 4, {0x12, 0x3F, 0, 0xAB, 0xCF, 0}, {1, 2, 3, 77, 10, 11, 12, 77}},
};

TEST(Blit, ConvertsRowsAndNothingBesideThem) {
    for (const RowCase& test : km_RowCases) {
        Bytes dest(test.expected.size(), 77);
        test.convert(test.source.data(), test.sourceRowBytes, dest.data(), test.destRowBytes, test.width, 2);
        EXPECT_EQ(dest, test.expected) << test.what;
        test.convert(nullptr, 0, nullptr, 0, 0, 5);
        test.convert(nullptr, 1, nullptr, 1, 5, 0);
        EXPECT_DEATH(test.convert(nullptr, 1, nullptr, 1, 1, 1), "inSrcPtr && inDstPtr") << test.what;
        EXPECT_DEATH(test.convert(dest.data(), 0, dest.data(), 1, 1, 1), "inSrcRowBytes && inDstRowBytes");
    }
}

TEST(Blit, ConvertsRunsOfSamples) {
    const Bytes nibbles{0x12, 0x3F};
    std::vector<std::uint16_t> words(4, 777);
    NvConvert4BitTo16(nibbles.data(), words.data(), 3);
    EXPECT_THAT(words, ElementsAre(1, 2, 3, 777));

    const Bytes planes{1, 2, 3, 11, 12, 13, 21, 22, 23};
    Bytes rgb(9);
    NvInterleavePlanes(planes.data(), rgb.data(), 3);
    EXPECT_THAT(rgb, ElementsAre(1, 11, 21, 2, 12, 22, 3, 13, 23));
}

TEST(Blit, ClosesTheGapsOfDroppedChannels) {
    Bytes pixels{1, 2, 3, 4, 5, 6, 7, 8};
    NvKeepChannels(pixels.data(), 2, 4, 3);
    pixels.resize(6);
    EXPECT_THAT(pixels, ElementsAre(1, 2, 3, 5, 6, 7));
    NvKeepChannels(pixels.data(), 2, 3, 3);
    NvKeepChannels(pixels.data(), 2, 3, 9);
    EXPECT_THAT(pixels, ElementsAre(1, 2, 3, 5, 6, 7)) << "there are no more to drop";

    struct {
        std::uint32_t channel;
        Bytes expected;
    } const km_Cases[] = {{0, {2, 3, 5, 6}}, {1, {1, 3, 4, 6}}, {2, {1, 2, 4, 5}}};
    for (const auto& test : km_Cases) {
        Bytes rgb{1, 2, 3, 4, 5, 6};
        NvDropChannel(rgb.data(), 2, 3, test.channel);
        rgb.resize(4);
        EXPECT_EQ(rgb, test.expected) << test.channel;
    }
}

TEST(Blit, ChangesRowsInPlace) {
    Bytes pixels{1, 2, 3, 4, 99, 5, 6, 7, 8, 99};
    NvSwapChannels(pixels.data(), 5, 2, 2, 2, 0, 1);
    EXPECT_THAT(pixels, ElementsAre(2, 1, 4, 3, 99, 6, 5, 8, 7, 99));
    NvInvert(pixels.data(), 5, 4, 2);
    EXPECT_THAT(pixels, ElementsAre(253, 254, 251, 252, 99, 249, 250, 247, 248, 99));
    EXPECT_DEATH(NvSwapChannels(pixels.data(), 5, 2, 2, 2, 0, 2), "inChannelB < inChannels");
}

TEST(Blit, CopiesChannelsBetweenPixelsOfDifferentSize) {
    const Bytes rgb{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}; // 2 x 2
    const NvRect all{0, 0, 2, 2};
    Bytes two(8);
    NvCopyFromChannels(rgb.data(), 6, all, 3, 1, two.data(), 4, all, 2, 8);
    EXPECT_THAT(two, ElementsAre(2, 3, 5, 6, 8, 9, 11, 12));

    Bytes wide(12, 77);
    NvCopyIntoChannels(two.data(), 4, {1, 0, 2, 2}, 2, wide.data(), 6, {0, 0, 1, 2}, 3, 1, 8);
    EXPECT_THAT(wide, ElementsAre(77, 5, 6, 77, 77, 77, 77, 11, 12, 77, 77, 77));

    Bytes words(4);
    NvCopyFromChannels(rgb.data(), 8, {1, 0, 2, 1}, 2, 1, words.data(), 4, {1, 0, 2, 1}, 1, 16);
    EXPECT_THAT(words, ElementsAre(0, 0, 7, 8)) << "channels of two bytes";

    EXPECT_DEATH(NvCopyFromChannels(rgb.data(), 6, all, 3, 2, two.data(), 4, all, 2, 8),
                 "inDstChannels . inSrcIndex. <= inSrcChannels");
    EXPECT_DEATH(NvCopyIntoChannels(two.data(), 4, all, 2, wide.data(), 6, all, 3, 2, 8),
                 "inSrcChannels . inDstIndex. <= inDstChannels");
    EXPECT_DEATH(NvCopyRect(rgb.data(), 6, all, two.data(), 4, {0, 0, 1, 2}, 1, 8),
                 "inSrcRect.right - inSrcRect.left. == .inDstRect.right - inDstRect.left");
}

} // namespace
