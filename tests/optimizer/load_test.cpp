// Loading: whatever a file holds, what is drawn and in which colour is known afterwards, or the file is left
// alone with the reason kept.

#include <cerrno>

#include "nvcode2/gif/nvgifframereader.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/gifbytes.h"
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
        {"thousands of full frames", screenful(2000, 1000, 0), false},
        {"thousands of small frames", screenful(2000, 1, 1), true},
        {"thousands of small frames that would become full ones", screenful(2000, 1, 3), false},
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
        EXPECT_EQ(CodeOf([&] { Load(path, limit); }), comments == 100 ? 0u : 2u) << comments;
        EXPECT_EQ(CodeOf([&] { NvGIFFrameReader(path.c_str(), limit); }), comments == 100'000 ? 2u : 0u);
    }
}

TEST_F(LoadTest, AFileThatCannotBeOpenedKeepsTheSystemsReason) {
    std::filesystem::create_directory(mFolder / "folder.gif");
    for (const auto& [name, systemError] : {std::pair{"missing.gif", ENOENT}, {"folder.gif", EISDIR}}) {
        PvOptimizer optimizer(mHost);
        EXPECT_EQ(optimizer.OptimizeGIFFile((mFolder / name).c_str(), 4711), 4711u);
        ASSERT_TRUE(optimizer.GetOutcome().mLoadError);
        EXPECT_EQ(optimizer.GetOutcome().mLoadError->GetCode(), 32u);
        EXPECT_EQ(optimizer.GetOutcome().mLoadError->GetSystemError(), systemError);
    }
}

} // namespace
