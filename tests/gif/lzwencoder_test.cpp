#include <bit>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/image/images.h"
#include "tests/support/lzwcodec.h"
#include "tests/support/testfolder.h"

namespace {

using namespace std::string_literals;

/** Pixels with runs and repetitions, as pictures have them. */
Indices RandomPixels(std::size_t inCount, unsigned inColors, std::mt19937& ioRandom) {
    Indices pixels;
    while (pixels.size() < inCount) {
        const auto pixel = static_cast<std::uint8_t>(RandomBelow(ioRandom, inColors));
        pixels.insert(pixels.end(), 1 + (RandomBelow(ioRandom, 4) == 0 ? RandomBelow(ioRandom, 9) : 0),
                      pixel);
    }
    pixels.resize(inCount);
    return pixels;
}

/** The pixels of a frame in memory, in the order in which a file stores them. */
Indices InFileOrder(const Indices& inPixels, const FrameShape& inShape) {
    Indices ordered;
    NvForEachRowInFileOrder(inShape.mHeight, inShape.mInterlaced, [&](std::uint32_t inRow) {
        const auto row = inPixels.begin() + std::ptrdiff_t{inRow} * inShape.mStride;
        ordered.insert(ordered.end(), row, row + inShape.mWidth);
    });
    return ordered;
}

TEST(LZWEncoder, WritesTheExpectedBytes) {
    const TestFolder folder;
    LZWCodec codec(folder / "stream");
    // Codes of 3 bits, the lowest first: clear 4, pixel 1, end 5 is 1'0100'1100.
    EXPECT_EQ(codec.Encode(1, {1}, {1, 1, 1, false}), "\x02\x02\x4C\x01\x00"s);
    // clear 4, 0, 6 = "00", 6, and as code 7 was assigned with the second 6, end 5 in 4 bits
    EXPECT_EQ(codec.Encode(2, {0, 0, 0, 0, 0}, {5, 1, 5, false}), "\x02\x02\x84\x5D\x00"s);
    // nothing to encode: clear, end
    EXPECT_EQ(codec.Encode(8, {}, {0, 0, 0, false}), "\x08\x03\x00\x03\x02\x00"s);
    EXPECT_DEATH(codec.Encode(9, {0}, {1, 1, 1, false}), "inMinimumCodeSize <= 8");
}

TEST(LZWCodec, AgreesWithTheReferenceAtEveryCodeSizeAndInEveryShape) {
    const TestFolder folder;
    LZWCodec codec(folder / "stream");
    std::mt19937 random(1);
    std::vector<std::pair<std::uint8_t, FrameShape>> cases;
    for (std::uint8_t size = 1; size <= 8; ++size)
        cases.push_back({size, {301, 257, 301U + size % 3, size % 2 == 1}});
    for (std::uint32_t height = 1; height <= 9; ++height)
        for (const std::uint32_t width : {1U, 2U, 7U, 40U})
            for (const bool interlaced : {false, true})
                cases.push_back({3, {width, height, width + height % 4, interlaced}});
    for (const auto& [size, shape] : cases) {
        SCOPED_TRACE(testing::Message() << +size << " bits, " << shape.mWidth << " x " << shape.mHeight);
        const Indices pixels = RandomPixels(std::size_t{shape.mStride} * shape.mHeight, 1U << size, random);
        const Indices ordered = InFileOrder(pixels, shape);
        const std::string stream = codec.Encode(size, pixels, shape);
        ASSERT_TRUE(stream == ReferenceLZWEncode(size, ordered));
        ASSERT_TRUE(codec.Decode(stream, shape).mPixels == ordered);
        ASSERT_TRUE(ReferenceLZWDecode(stream, shape.PixelCount()).mPixels == ordered);
    }
}

} // namespace
