// Loading: whatever a file holds, it is either known what is drawn in which colour, or the file is left alone
// with the reason kept.

#include <cerrno>

#include "nvcode2/gif/nvgifframereader.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/gifbytes.h"
#include "tests/support/lzwreference.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/base/pvmemory.h"
#include "win/optimizer/frames/pvload.h"

namespace {

constexpr std::uint64_t km_Plenty = std::uint64_t{1} << 30;

class LoadTest : public OptimizerTest {
protected:
    std::unique_ptr<TestAnimation> Load(const std::string& inPath, std::uint64_t inMemoryLimit = km_Plenty) {
        PvProgress progress(mHost);
        return std::make_unique<TestAnimation>(*LoadAnimation(inPath.c_str(), inMemoryLimit, progress));
    }
};

TestFrame WithTransparent(TestFrame inFrame, int inIndex) {
    inFrame.mTransparent = inIndex;
    return inFrame;
}

TestFrame Cut(TestFrame inFrame, std::size_t inDelivered, bool inInterlaced) {
    inFrame.mDelivered = inDelivered;
    inFrame.mInterlaced = inInterlaced;
    return inFrame;
}

TestGIF FourGreys(std::vector<TestFrame> inFrames) {
    TestGIF gif = Movie(std::move(inFrames));
    gif.mTable = Greys(4);
    return gif;
}

TestFrame WithOwnTable(TestFrame inFrame) {
    inFrame.mLocalTable = Greys(4);
    return inFrame;
}

TEST_F(LoadTest, WhatIsShownIsWhatTheFileSays) {
    const std::string tall = "0123 1032 2301 3210 0011 2233 0101 3232 1111";
    const struct {
        const char* mName;
        TestGIF mGIF;
    } cases[] = {
        {"transparent index in the table", Movie({Picture("01.2 3..0")})},
        {"transparent index that no pixel has", Movie({WithTransparent(Picture("0123"), 9)})},
        {"transparent index beyond the table", FourGreys({Picture("01.2 1..0")})},
        {"the same with every entry in use", FourGreys({Picture("01.2 3..0")})},
        {"the same in a local table", FourGreys({WithOwnTable(Picture("01.2 3..0"))})},
        {"nothing drawn", FourGreys({Picture(".. ..")})},
        {"drawn indices beyond the table", FourGreys({Picture("0123 4567"), Picture("9.")})},
        {"the same in a local table", FourGreys({WithOwnTable(Picture("0123 4567"))})},
        {"the same with transparency beyond it too", FourGreys({Picture("0123 4.67")})},
        {"data that ends early", FourGreys({Cut(Picture(tall), 14, false)})},
        {"the same, interlaced", FourGreys({Cut(Picture(tall), 14, true)})},
        {"the same in the last pass", FourGreys({Cut(Picture(tall), 26, true)})},
        {"a low one", FourGreys({Cut(Picture("12 30 21"), 4, true)})},
        {"no pixel at all", FourGreys({Cut(Picture("0123"), 0, false)})},
        {"a shared table that a later frame outgrows",
         FourGreys({Picture("0123"), Picture("3.0", 0, 1), Picture("5", 1, 1), Picture("0321.", 0, 2)})},
    };
    for (const auto& [name, gif] : cases) {
        SCOPED_TRACE(name);
        ExpectTheSameIsShown(gif, Describe(*Load(Write(gif))));
    }
}

TEST_F(LoadTest, AFileThatNeedsTooMuchMemoryIsRefusedBeforeItsPixelsAreRead) {
    const auto screenful = [](std::uint32_t inFrames, std::uint32_t inFrameSize, std::uint32_t inDisposal) {
        const std::string noPixels = "\x02\x01\x2C\x00"s; // clear 4 and end 5 in codes of 3 bits
        std::string bytes = GIFHeader(1000, 1000, 0x80) + GIFTable(2);
        for (std::uint32_t i = 0; i < inFrames; ++i)
            bytes += GIFControl(inDisposal << 2, 0, 0) + GIFDescriptor(0, 0, inFrameSize, inFrameSize, 0) +
                     noPixels;
        return bytes + ";";
    };
    const struct {
        const char* mName;
        std::string mBytes;
        bool mFits;
    } cases[] = {
        {"a huge screen", GIFHeader(65535, 65535, 0x80) + GIFTable(2) + km_OnePixelFrame + ";", false},
        {"one full frame", screenful(1, 1000, 0), true},
        {"thousands of small frames that restore", screenful(2000, 1, 3), true},
        {"a frame that reaches far beyond the screen",
         GIFHeader(1, 1, 0x80) + GIFTable(2) + km_OnePixelFrame + GIFDescriptor(0, 0, 65535, 65535, 0) +
             "\x02\x01\x2C\x00;"s,
         true},
    };
    for (const auto& [name, bytes, fits] : cases) {
        SCOPED_TRACE(name);
        mHost.mProgress.clear();
        const std::string path = WriteTestFile(mFolder / "pictures/large.gif", bytes);
        EXPECT_EQ(CodeOf([&] { Load(path); }), fits ? 0u : 2u);
        EXPECT_EQ(mHost.mProgress.empty(), !fits);
        if (fits)
            continue;
        mSettings.mMemoryLimit = km_Plenty;
        EXPECT_EQ(CodeOf([&] { Optimize(path); }), 2u);
        EXPECT_EQ(ReadTestFile(path), bytes);
    }
}

TEST_F(LoadTest, PackedFramesCountAgainstTheMemoryLimitAsTheyAreMade) {
    TestRandom random(1);
    const auto noise = [&](auto, auto) { return random.Below(256); };
    TestGIF gif = Movie({Paint(200, 200, noise), Paint(200, 200, noise)});
    gif.mTable = Greys(256);
    for (int frames = 2; frames <= 10; frames += 8) { // 45,000 bytes each
        while (gif.mFrames.size() < static_cast<std::size_t>(frames))
            gif.mFrames.push_back(gif.mFrames[gif.mFrames.size() - 2]);
        const std::string path = Write(gif);
        mSettings.mMemoryLimit = PvEstimateMemory(NvGIFFrameReader(path.c_str(), km_Plenty)) + 200'000;
        EXPECT_EQ(CodeOf([&] { Load(path, mSettings.mMemoryLimit); }), frames == 2 ? 0u : 2u);
        EXPECT_EQ(CodeOf([&] { Optimize(path); }), frames == 2 ? 0u : 2u);
    }
}

TEST_F(LoadTest, CommentsCountAgainstTheMemoryLimitWhileTheyAreFound) {
    const auto commented = [](std::uint32_t inComments) {
        std::string bytes = GIFHeader(1, 1, 0x80) + GIFTable(2);
        for (std::uint32_t i = 0; i < inComments; ++i)
            bytes += "\x21\xFE\x00"s;
        return bytes + km_OnePixelFrame + ";";
    };
    constexpr std::uint64_t limit = 4 << 20;
    for (const std::uint32_t comments : {100u, 20'000u, 100'000u}) {
        const std::string path = WriteTestFile(mFolder / "pictures/talkative.gif", commented(comments));
        EXPECT_EQ(CodeOf([&] { Load(path, limit + (14 << 20)); }), comments == 100 ? 0u : 2u) << comments;
        EXPECT_EQ(CodeOf([&] { NvGIFFrameReader(path.c_str(), limit); }), comments == 100'000 ? 2u : 0u);
    }
}

TEST_F(LoadTest, FramesBeyondTheScreenAreClippedAndNothingElseChanges) {
    const auto place = [](std::uint32_t inLeft, std::uint32_t inTop, std::uint32_t inDisposal) {
        TestFrame frame = Textured(TestTexture::km_Sparse, 40, 16, inLeft + inTop);
        frame.mLeft = inLeft;
        frame.mTop = inTop;
        frame.mDelay = 7 + inLeft;
        frame.mDisposal = inDisposal;
        return frame;
    };
    const std::pair<std::uint32_t, std::uint32_t> places[] = {{30, 5}, {5, 30}, {30, 30}, {59, 59},
                                                              {60, 0}, {0, 60}, {99, 99}};
    for (const bool isLossless : {true, false})
        for (const bool isInterlaced : {false, true})
            for (const std::uint32_t disposal : {1u, 2u, 3u}) {
                TestGIF gif = Movie({place(0, 0, 1), place(20, 20, 1)});
                for (const auto& [left, top] : places) {
                    gif.mFrames.push_back(place(left, top, disposal));
                    gif.mFrames.back().mInterlaced = isInterlaced;
                }
                gif.mFrames.push_back(place(3, 3, 1));
                gif.mFrames[3] = Cut(gif.mFrames[3], 500, isInterlaced);
                gif.mFrames[4].mLocalTable = Greys(16);
                gif.mWidth = gif.mHeight = 60;
                const std::string path = Write(gif);
                ExpectTheSameIsShown(gif, Describe(*Load(path)));
                mSettings.mIsLossless = isLossless;
                EXPECT_LT(Optimize(path), EncodeGIF(gif).size());
                EXPECT_EQ(mOutcome.mGateReason, "");
                const TestGIF result = ReadGIF(path);
                const TestComparison comparison = CompareGIFs(gif, result);
                EXPECT_EQ(comparison.mDifference, "");
                EXPECT_TRUE(comparison.mDiffering == 0 || !isLossless) << comparison.mDiffering;
                for (const TestFrame& frame : result.mFrames)
                    EXPECT_TRUE(frame.mLeft + frame.mWidth <= 60 && frame.mTop + frame.mHeight <= 60);
            }
    TestGIF enlarged = Movie({place(30, 0, 1), place(0, 0, 1)}); // browsers show 70 columns, others 60
    enlarged.mWidth = 60;
    const std::string path = Write(enlarged);
    EXPECT_EQ(Optimize(path), EncodeGIF(enlarged).size());
    EXPECT_EQ(mOutcome.mLoadError.value().GetCode(), 28u);
}

// A frame of four pixels whose data hold three, five, or a code that is not defined.
TEST_F(LoadTest, DamagedDataAreReportedAndOnlyReplacedWhereTheOriginalIsKept) {
    const auto withData = [](const std::vector<LZWCode>& inCodes) {
        return GIFHeader(2, 2, 0x81) + GIFTable(4) + GIFExtension(0x77, {std::string(250, 'x')}) +
               GIFDescriptor(0, 0, 2, 2, 0) + ReferenceLZWEncode(2, {0, 1, 2, 3}) +
               GIFDescriptor(0, 0, 2, 2, 0) + '\x02' + PackLZWCodes(inCodes) + ';';
    };
    const struct {
        std::string mBytes;
        NvDataDamage mDamage; // of frame 2
        std::uint32_t mError;
    } cases[] = {
        {withData({{4, 3}, {1, 3}, {2, 3}, {6, 3}, {5, 4}}), NvDataDamage::km_None, 0},
        {withData({{4, 3}, {1, 3}, {2, 3}, {3, 3}, {5, 4}}), NvDataDamage::km_EndsEarly, 0},
        {withData({{4, 3}, {1, 3}, {2, 3}, {3, 3}, {3, 4}, {3, 4}}), NvDataDamage::km_RunsOver, 0},
        {withData({{4, 3}, {1, 3}, {7, 3}, {1, 3}, {5, 4}}), NvDataDamage::km_Undefined, 28},
        {withData({{4, 3}, {1, 3}, {7, 3}, {7, 3}, {5, 4}}), NvDataDamage::km_Undefined, 28},
    };
    for (const auto& [bytes, damage, error] : cases)
        for (const bool keepsOriginal : {false, true}) {
            SCOPED_TRACE(static_cast<int>(damage));
            const std::string path = WriteTestFile(mFolder / "pictures/damaged.gif", bytes);
            mSettings.mKeepsOriginal = keepsOriginal;
            mSettings.mIsLossless = true;
            const bool isSound = damage == NvDataDamage::km_None;
            const bool isSmaller = Optimize(path) < bytes.size();
            EXPECT_EQ(isSmaller, isSound || (keepsOriginal && error == 0));
            EXPECT_EQ(mOutcome.mDamage.mKind, damage);
            EXPECT_EQ(mOutcome.mDamage.mFrame, isSound ? 0u : 2u);
            EXPECT_EQ(mOutcome.mLoadError ? mOutcome.mLoadError->GetCode() : 0, error);
            if (isSmaller)
                ExpectTheSameIsShown(PlainReadGIF(bytes).value(), ReadGIF(path));
        }
}

} // namespace
