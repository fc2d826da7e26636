// The LZW codec, against streams worked out by hand and the plain codec.

#include "tests/image/images.h"
#include "tests/support/lzwcodec.h"

namespace {

using namespace std::string_literals;

struct StreamCase {
    const char* mName;
    unsigned mMinimumCodeSize;
    std::vector<LZWCode> mCodes;
    std::uint32_t mWidth; // of a frame of one row
    Indices mPixels;      // expected
    std::uint32_t mError = 0;
    bool mIsUndefined = false; // and more of what the decoder reports
    bool mRunsOver = false;
};

const StreamCase km_Streams[] = {
    {"plain", 2, {{4, 3}, {1, 3}, {2, 3}, {6, 3}, {5, 4}}, 4, {1, 2, 1, 2}},
    {"no first clear code", 2, {{1, 3}, {2, 3}, {6, 3}, {5, 4}}, 4, {1, 2, 1, 2}},
    {"a first code above the end code", 2, {{6, 3}}, 4, {}, 28},
    {"clear codes in a row", 2, {{4, 3}, {4, 3}, {1, 3}, {4, 3}, {4, 3}, {2, 3}, {5, 3}}, 4, {1, 2}},
    {"end after clear", 2, {{4, 3}, {1, 3}, {4, 3}, {5, 3}, {2, 3}}, 4, {1}},
    {"a string after clear", 2, {{4, 3}, {1, 3}, {1, 3}, {4, 3}, {6, 3}}, 4, {}, 28},
    {"code just made", 2, {{4, 3}, {1, 3}, {6, 3}, {7, 3}, {5, 4}}, 6, {1, 1, 1, 1, 1, 1}},
    {"code beyond the next", 2, {{4, 3}, {1, 3}, {7, 3}, {6, 3}, {5, 4}}, 5, {1, 1, 1, 1, 1}, 0, true},
    {"code beyond the next twice", 2, {{4, 3}, {1, 3}, {7, 3}, {7, 3}}, 9, {}, 28},
    {"string of an undefined prefix", 2, {{4, 3}, {1, 3}, {7, 3}, {2, 3}, {7, 4}}, 9, {}, 28},
    {"undefined prefix not used",
     2,
     {{4, 3}, {1, 3}, {7, 3}, {2, 3}, {6, 4}},
     9,
     {1, 1, 1, 2, 1, 1},
     0,
     true},
    {"early end code", 2, {{4, 3}, {1, 3}, {5, 3}, {2, 3}, {2, 3}}, 4, {1}},
    {"no end code", 2, {{4, 3}, {1, 3}}, 4, {1}},
    {"no codes", 2, {}, 4, {}},
    {"more codes than pixels", 2, {{4, 3}, {1, 3}, {2, 3}, {6, 3}, {6, 4}}, 3, {1, 2, 1}, 0, false, true},
    {"a code more", 2, {{4, 3}, {1, 3}, {2, 3}, {5, 3}}, 1, {1}, 0, false, true},
    {"a clear code more", 2, {{4, 3}, {1, 3}, {4, 3}, {4, 3}, {5, 3}}, 1, {1}},
    {"a clear code and a pixel more", 2, {{4, 3}, {1, 3}, {4, 3}, {2, 3}}, 1, {1}, 0, false, true},
    {"undefined code behind the pixels", 2, {{4, 3}, {1, 3}, {7, 3}}, 1, {1}, 0, false, true},
    {"size 1, exact", 1, {{2, 2}, {0, 2}, {1, 2}, {0, 3}, {3, 3}}, 3, {0, 1, 0}},
    {"size 1, exact, no end code", 1, {{2, 2}, {0, 2}, {1, 2}}, 2, {0, 1}},
    {"size 1, a pixel short", 1, {{2, 2}, {0, 2}, {1, 2}, {0, 3}, {3, 3}}, 4, {}, 28},
    {"size 1, a pixel too many", 1, {{2, 2}, {0, 2}, {1, 2}, {0, 3}, {3, 3}}, 2, {}, 28},
    {"size 1, half a string too many", 1, {{2, 2}, {0, 2}, {1, 2}, {4, 3}, {3, 3}}, 3, {}, 28},
    {"size 9", 9, {{512, 10}, {7, 10}, {255, 10}, {514, 10}, {513, 10}}, 4, {7, 255, 7, 255}},
    {"size 9, first root above 255", 9, {{512, 10}, {256, 10}}, 4, {}, 28},
    {"size 9, later root above 255", 9, {{512, 10}, {7, 10}, {511, 10}}, 4, {}, 28},
    {"size 11", 11, {{2048, 12}, {7, 12}, {2050, 12}, {2049, 12}}, 3, {7, 7, 7}},
    {"size 0", 0, {{1, 1}}, 4, {}, 28},
    {"size 12", 12, {{4096, 13}}, 4, {}, 28},
    {"size 255", 255, {{0, 8}}, 4, {}, 28},
};

class LZW : public testing::Test {
protected:
    TestFolder mFolder;
    LZWCodec mCodec{mFolder / "stream"};
};

TEST_F(LZW, ReadsWhatRealFilesHoldAndNoMore) {
    Indices pixels(2000); // strings of an earlier frame must not show in later ones
    std::iota(pixels.begin(), pixels.end(), std::uint8_t{0});
    mCodec.Decode(ReferenceLZWEncode(8, pixels), {2000, 1, 2000, false});
    for (const StreamCase& row : km_Streams) {
        SCOPED_TRACE(row.mName);
        const std::string stream = static_cast<char>(row.mMinimumCodeSize) + PackLZWCodes(row.mCodes);
        const LZWDecoded decoded = mCodec.Decode(stream, {row.mWidth, 1, row.mWidth, false});
        EXPECT_EQ(decoded.mError, row.mError);
        if (row.mError == 0) {
            EXPECT_EQ(decoded.mPixels, row.mPixels);
            EXPECT_EQ(decoded.mIsUndefined, row.mIsUndefined);
            EXPECT_EQ(decoded.mRunsOver, row.mRunsOver);
        }
        EXPECT_EQ(ReferenceLZWDecode(stream, row.mWidth).mError, row.mError);
    }
}

TEST_F(LZW, PiecesOfAnySizeAreOneStream) {
    // 332 = clear 4, pixel 1, end 5 in 3 bits each, in sub-blocks of one byte
    EXPECT_EQ(mCodec.Decode("\x02\x01\x4C\x01\x01\x00"s, {1, 1, 1, false}).mPixels, Indices{1});
    std::mt19937 random(5);
    Indices pixels(3000);
    std::ranges::generate(pixels, [&] { return static_cast<std::uint8_t>(RandomBelow(random, 200)); });
    const std::string whole = ReferenceLZWEncode(8, pixels);
    std::string codes;
    for (std::size_t at = 1; whole[at] != 0; at += 1 + static_cast<unsigned char>(whole[at]))
        codes += whole.substr(at + 1, static_cast<unsigned char>(whole[at]));
    for (std::uint32_t longest = 1; longest < 40; ++longest) {
        std::string pieces = whole.substr(0, 1);
        for (std::size_t at = 0; at < codes.size();) {
            const std::string piece = codes.substr(at, 1 + RandomBelow(random, longest));
            pieces += static_cast<char>(piece.size()) + piece;
            at += piece.size();
        }
        EXPECT_TRUE(mCodec.Decode(pieces + '\0', {3000, 1, 3000, false}).mPixels == pixels) << longest;
    }
    EXPECT_EQ(mCodec.Decode("\x02\x02\x4C"s, {1, 1, 1, false}).mError, 18u) << "cut inside a sub-block";
    EXPECT_EQ(mCodec.Decode("\x02\x01\x44"s, {9, 1, 9, false}).mError, 18u) << "cut between sub-blocks";
    EXPECT_EQ(mCodec.Decode(""s, {1, 1, 1, false}).mError, 18u);
}

TEST_F(LZW, AnEndedStreamStaysEndedInLaterPasses) {
    const FrameShape shape{1, 4, 1, true};
    const std::string ended = '\x02' + PackLZWCodes({{4, 3}, {1, 3}, {5, 3}, {4, 3}, {2, 3}, {3, 3}, {5, 3}});
    EXPECT_EQ(mCodec.Decode(ended, shape).mPixels, Indices{1});
    // the terminator where a code is due, then what would be another sub-block
    const std::string cut = "\x02\x01\x0C\x00"s + PackLZWCodes({{2, 3}, {3, 3}, {2, 3}, {3, 3}});
    EXPECT_EQ(mCodec.Decode(cut, shape).mPixels, Indices{1});
}

// Long enough for a 16-bit count of codes to wrap.
TEST_F(LZW, AFullTableServesUntilAClearCodeComes) {
    std::mt19937 random(3);
    std::vector<LZWCode> codes{{256, 9}};
    for (unsigned i = 0; i < 70000; ++i) {
        const unsigned next = std::min(258 + (i > 0 ? i - 1 : 0), 4096U); // first code not defined yet
        const bool isString = 258 < next && i < 6000 && i % 3 == 0;
        codes.push_back({isString ? 258 + RandomBelow(random, next - 258) : RandomBelow(random, 256),
                         static_cast<unsigned>(std::bit_width(std::min(next, 4095U)))});
    }
    codes.insert(codes.end(), {{4095, 12}, {256, 12}, {17, 9}, {258, 9}, {257, 9}}); // the last string, too
    const std::string stream = '\x08' + PackLZWCodes(codes);
    const std::uint32_t plenty = 3000;
    const LZWDecoded decoded = mCodec.Decode(stream, {plenty, plenty, plenty, false});
    EXPECT_EQ(decoded.mError, 0u);
    ASSERT_GT(decoded.mPixels.size(), 70000u);
    EXPECT_EQ(Indices(decoded.mPixels.end() - 3, decoded.mPixels.end()), Indices(3, 17));
    EXPECT_TRUE(decoded.mPixels == ReferenceLZWDecode(stream, std::size_t{plenty} * plenty).mPixels);
}

TEST_F(LZW, AgreesWithTheReferenceOnCorruptStreams) {
    std::mt19937 random(4);
    int failed = 0;
    int decodedWell = 0;
    for (int round = 0; round < 6000; ++round) {
        const unsigned size = round % 5 == 0 ? RandomBelow(random, 13) : 1 + RandomBelow(random, 4);
        std::string stream;
        if (round % 2 == 0) {
            Indices pixels(300);
            for (std::uint8_t& pixel : pixels)
                pixel = static_cast<std::uint8_t>(RandomBelow(random, 2));
            stream = ReferenceLZWEncode(std::clamp(size, 2U, 8U), pixels);
            stream[0] = static_cast<char>(size);
            for (unsigned flips = RandomBelow(random, 4); flips > 0; --flips)
                stream[RandomBelow(random, static_cast<std::uint32_t>(stream.size()))] ^=
                    static_cast<char>(1U << RandomBelow(random, 8));
        } else {
            std::string bytes(1 + RandomBelow(random, 80), '\0');
            for (char& byte : bytes)
                byte = static_cast<char>(random());
            stream = static_cast<char>(size) + (static_cast<char>(bytes.size()) + bytes) + '\0';
        }
        if (RandomBelow(random, 20) == 0)
            stream.resize(RandomBelow(random, static_cast<std::uint32_t>(stream.size())));
        const std::uint32_t width = 1 + RandomBelow(random, 30);
        const FrameShape shape{width, 1 + RandomBelow(random, 20), width, RandomBelow(random, 2) == 0};
        const LZWDecoded expected = ReferenceLZWDecode(stream, shape.PixelCount());
        const LZWDecoded decoded = mCodec.Decode(stream, shape);
        ASSERT_EQ(decoded.mError, expected.mError) << "round " << round;
        if (expected.mError == 0) {
            ASSERT_EQ(decoded.mPixels, expected.mPixels) << "round " << round;
            ASSERT_EQ(decoded.mIsUndefined, expected.mIsUndefined) << "round " << round;
            ASSERT_EQ(decoded.mRunsOver, expected.mRunsOver) << "round " << round;
        }
        (expected.mError == 0 ? decodedWell : failed) += 1;
    }
    EXPECT_GT(failed, 1000);
    EXPECT_GT(decodedWell, 1000);
}

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

TEST_F(LZW, WritesTheExpectedBytes) {
    // Codes of 3 bits, the lowest first: clear 4, pixel 1, end 5 is 1'0100'1100.
    EXPECT_EQ(mCodec.Encode(1, {1}, {1, 1, 1, false}), "\x02\x02\x4C\x01\x00"s);
    // clear 4, 0, 6 = "00", 6, and as code 7 was assigned with the second 6, end 5 in 4 bits
    EXPECT_EQ(mCodec.Encode(2, {0, 0, 0, 0, 0}, {5, 1, 5, false}), "\x02\x02\x84\x5D\x00"s);
    // nothing to encode: clear, end
    EXPECT_EQ(mCodec.Encode(8, {}, {0, 0, 0, false}), "\x08\x03\x00\x03\x02\x00"s);
}

TEST_F(LZW, AgreesWithTheReferenceAtEveryCodeSizeAndInEveryShape) {
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
        const std::string stream = mCodec.Encode(size, pixels, shape);
        ASSERT_TRUE(stream == ReferenceLZWEncode(size, ordered));
        ASSERT_TRUE(mCodec.Decode(stream, shape).mPixels == ordered);
        ASSERT_TRUE(ReferenceLZWDecode(stream, shape.PixelCount()).mPixels == ordered);
    }
}

} // namespace
