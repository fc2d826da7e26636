// The gate: a result that a viewer could distinguish from the original never takes its place.

#include <cmath>

#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/look/pvgate.h"

namespace {

/** Small, in a file twice as large as it needs to be. */
TestGIF Original() {
    TestGIF gif = Movie({Picture("0123 1230 2301"), Picture("45", 1, 1), Picture("6.6 .6.", 1, 1)});
    gif.mTable.resize(256, 0x123456);
    gif.mFrames[1].mDisposal = 2;
    gif.mFrames[2].mUserInput = true;
    gif.mLoop = 3;
    gif.mComments = {"first", "second"};
    gif.mAspect = 49;
    for (TestFrame& frame : gif.mFrames)
        frame.mDelay = 10;
    return gif;
}

struct Change {
    const char* mName;
    std::function<void(TestGIF&)> mMake;
    const char* mReason;
};

const Change km_Noticed[] = {
    {"wider screen", [](TestGIF& io) { ++io.mWidth; }, "the screen size would change"},
    {"higher screen", [](TestGIF& io) { ++io.mHeight; }, "the screen size would change"},
    {"one frame more", [](TestGIF& io) { io.mFrames.push_back(io.mFrames[0]); },
     "the number of frames would change"},
    {"one frame less", [](TestGIF& io) { io.mFrames.pop_back(); }, "the number of frames would change"},
    {"a delay", [](TestGIF& io) { ++io.mFrames[1].mDelay; }, "frame 2 would be shown for another time"},
    {"user input", [](TestGIF& io) { io.mFrames[0].mUserInput = true; },
     "frame 1 would wait differently for the user"},
    {"no loop", [](TestGIF& io) { io.mLoop.reset(); }, "the looping would change"},
    {"loop count", [](TestGIF& io) { io.mLoop = 4; }, "the looping would change"},
    {"a comment's text", [](TestGIF& io) { io.mComments[1] = "zweite"; }, "the comments would change"},
    {"a comment less", [](TestGIF& io) { io.mComments.pop_back(); }, "the comments would change"},
    {"comments' order", [](TestGIF& io) { std::swap(io.mComments[0], io.mComments[1]); },
     "the comments would change"},
    {"aspect", [](TestGIF& io) { io.mAspect = 0; }, "the pixel aspect ratio would change"},
    {"one pixel not drawn", [](TestGIF& io) { io.mFrames[0].mTransparent = 3; },
     "frame 1 would cover other pixels"},
    {"one pixel drawn", [](TestGIF& io) { io.mFrames[2].mPixels[1] = 6; },
     "frame 3 would cover other pixels"},
    {"more erased", [](TestGIF& io) { io.mFrames[0].mDisposal = 2; }, "frame 2 would cover other pixels"},
    {"less erased", [](TestGIF& io) { io.mFrames[1].mDisposal = 1; }, "frame 3 would cover other pixels"},
    {"pixels outside of the original's frame",
     [](TestGIF& io) {
         io.mFrames[2].mLeft = io.mFrames[2].mTop = 0;
         io.mFrames[2].mWidth = 4;
         io.mFrames[2].mHeight = 3;
         io.mFrames[2].mPixels = Picture("7777 .6.6 ..6.").mPixels;
     },
     "frame 3 would show other colours"},
    {"colours of the screen", [](TestGIF& io) { io.mTable[0] = io.mTable[1] = io.mTable[2] = 0x77FF77; },
     "frame 1 would show other colours"},
    {"blue alone", [](TestGIF& io) { io.mTable[1] ^= 0xFF; }, "frame 1 would show other colours"},
    {"a frame moved by a pixel", [](TestGIF& io) { ++io.mFrames[1].mLeft; },
     "frame 2 would show other colours"},
    {"a row cropped away",
     [](TestGIF& io) {
         io.mFrames[0].mHeight = 2;
         io.mFrames[0].mPixels.resize(8);
     },
     "frame 1 would cover other pixels"},
    {"one colour", [](TestGIF& io) { io.mTable[6] ^= 0x40; }, "frame 3 would show other colours"},
    {"colours of a small frame", [](TestGIF& io) { io.mFrames[2].mLocalTable.assign(16, 0xFF0000); },
     "frame 3 would show other colours"},
};

class GateTest : public OptimizerTest {
protected:
    std::string Compare(const TestGIF& inOriginal, const TestGIF& inCandidate,
                        const PvColourAllowance& inAllowance = {}) {
        PvProgress progress(mHost);
        return PvCompareGIFs(Write(inOriginal, "original.gif").c_str(),
                             Write(inCandidate, "candidate.gif").c_str(), inAllowance, progress)
            .mReason;
    }
};

TEST_F(GateTest, WhateverAViewerWouldNoticeIsRefused) {
    for (const Change& change : km_Noticed) {
        SCOPED_TRACE(change.mName);
        TestGIF candidate = Original();
        change.mMake(candidate);
        EXPECT_EQ(Compare(Original(), candidate), change.mReason);
        EXPECT_NE(Compare(candidate, Original()), "");
    }
    WriteTestFile(mFolder / "candidate.gif", EncodeGIF(Original()).substr(0, 900));
    PvProgress progress(mHost);
    const auto compare = [&] {
        return PvCompareGIFs((mFolder / "original.gif").c_str(), (mFolder / "candidate.gif").c_str(), {},
                             progress)
            .mReason;
    };
    EXPECT_EQ(compare(), "the result could not be read back");
    Write(Original(), "candidate.gif");
    mHost.mStopAt = mHost.mProgress.size();
    EXPECT_EQ(CodeOf(compare), NvErrorCode::km_Cancelled);
}

TEST_F(GateTest, WhatNobodyNoticesPasses) {
    const Change unnoticed[] = {
        {"nothing", [](TestGIF&) {}, ""},
        {"a shorter table", [](TestGIF& io) { io.mTable.resize(16); }, ""},
        {"background", [](TestGIF& io) { io.mBackground = 9; }, ""},
        {"an empty comment", [](TestGIF& io) { io.mComments.insert(io.mComments.begin(), ""); }, ""},
        {"disposal of the last frame", [](TestGIF& io) { io.mFrames.back().mDisposal = 2; }, ""},
        {"a pixel drawn over its like", [](TestGIF& io) { io.mFrames[2].mPixels[3] = 3; }, ""},
    };
    for (const Change& change : unnoticed) {
        SCOPED_TRACE(change.mName);
        TestGIF candidate = Original();
        change.mMake(candidate);
        EXPECT_EQ(Compare(Original(), candidate), "");
    }
}

/** Greys, wider than the pieces that are compared at once; the second frame draws one row in ten again. */
TestGIF WideGreys() {
    TestGIF gif = Movie({Paint(70, 10, [](auto, auto) { return 100; }),
                         Paint(70, 1, [](auto, auto) { return 100; }), Picture("0")});
    gif.mTable = Greys(256);
    gif.mFrames[2].mPixels[0] = 100;
    return gif;
}

TEST_F(GateTest, ColoursMayBeOffByWhatTheRunExplainsAndNoMore) {
    const std::string refused = "frame 2 would show other colours";
    const auto compare = [&](std::uint8_t inGrey, PvColourAllowance inAllowance) {
        TestGIF candidate = WideGreys();
        candidate.mFrames[1].mPixels[64] = inGrey;
        inAllowance.mPalette.Settle();
        return Compare(WideGreys(), candidate, inAllowance);
    };
    PvColourErrors palette;
    palette.Add(0x646464, 0x646A64);
    palette.Add(0x646464, 0x646564);
    palette.Add(0x636363, 0xFFFFFF);
    for (const int tolerance : {0, 1, 27, 28}) {
        SCOPED_TRACE(tolerance);
        const auto allowed = static_cast<std::uint32_t>(tolerance);
        const auto off = [=](int inLevels) { return static_cast<std::uint8_t>(100 + inLevels); };
        EXPECT_EQ(compare(off(tolerance), {{}, allowed, {}}), "");
        EXPECT_EQ(compare(off(-tolerance - 1), {{}, allowed, {}}), refused);
        EXPECT_EQ(compare(off(-tolerance - 6), {palette, allowed, {}}), "");
        EXPECT_EQ(compare(off(tolerance + 7), {palette, allowed, {}}), refused);
        PvColourErrors addedUp; // colours that changed twice
        addedUp.AddAll(palette, 3);
        EXPECT_EQ(compare(off(tolerance + 9), {addedUp, allowed, {}}), "");
    }
}

// Of pixels that changed places, as many as the frame exchanged, for as long as they stay.
TEST_F(GateTest, ExchangedPixelsAreExplainedByTheirFrame) {
    const TestGIF original = WideGreys();
    TestGIF candidate = original;
    candidate.mFrames[0].mPixels[64] = candidate.mFrames[0].mPixels[3] = 0;
    const auto compare = [&](std::vector<std::uint32_t> inMoved) {
        return Compare(original, candidate, {{}, 28, std::move(inMoved)});
    };
    EXPECT_EQ(compare({2, 0, 0}), "");
    EXPECT_EQ(compare({1, 1, 0}), "frame 1 would show other colours");
    candidate.mFrames[1].mPixels[3] = 200;
    candidate.mFrames[1].mPixels[64] = 0; // as it is shown already
    EXPECT_EQ(compare({2, 1, 0}), "");
    EXPECT_EQ(compare({3, 0, 0}), "frame 2 would show other colours");
    candidate.mFrames[1].mDisposal = 3; // what is put back is not exchanged again
    EXPECT_EQ(compare({2, 1, 0}), "");
    candidate.mFrames[2].mPixels[0] = 0;
    EXPECT_EQ(compare({2, 1, 0}), "frame 3 would show other colours");
    TestGIF changed = original; // in two places that the candidate goes on showing as they were
    changed.mFrames[1].mPixels[3] = changed.mFrames[1].mPixels[64] = 200;
    EXPECT_EQ(Compare(changed, original, {{}, 28, {1, 0, 0}}), "frame 2 would show other colours");
}

/** Rewrites the file when the first pass is about to replace it, so that the result is not what it should be.
 */
class MeddlingHost : public TestHost {
public:
    bool ReportProgress(double inFraction) override {
        if (mMeddle && (mMoment ? mProgress.size() == *mMoment : inFraction >= 0.5))
            std::exchange(mMeddle, nullptr)();
        return TestHost::ReportProgress(inFraction);
    }
    void BackupFile(const char* inPath) override {
        TestHost::BackupFile(inPath);
        if (mMeddleAtBackup)
            std::exchange(mMeddleAtBackup, nullptr)();
    }
    std::optional<std::size_t> mMoment; // report at which it meddles; nothing: the one named above
    std::function<void()> mMeddle;
    std::function<void()> mMeddleAtBackup;
};

TEST_F(GateTest, AFileThatWouldLookDifferentStaysByteForByte) {
    for (const Change& change : km_Noticed) {
        SCOPED_TRACE(change.mName);
        const std::string path = Write(Original());
        const auto size = static_cast<std::uint32_t>(std::filesystem::file_size(path));
        TestGIF other = Original();
        change.mMake(other);
        MeddlingHost host;
        host.mMeddle = [&] { Write(other); };
        {
            PvOptimizer optimizer(host);
            EXPECT_EQ(optimizer.OptimizeGIFFile(path.c_str(), size), size);
            EXPECT_NE(optimizer.GetOutcome().mGateReason, "");
        }
        EXPECT_FALSE(host.mMeddle);
        EXPECT_EQ(ReadTestFile(path), EncodeGIF(other));
        EXPECT_TRUE(host.mBackups.empty());
        EXPECT_THAT(Names("pictures"), testing::ElementsAre("test.gif"));
        EXPECT_THAT(Names("scratch"), testing::IsEmpty());
    }
}

/** Cuts every result but the first short as soon as it is there. */
class CuttingHost : public TestHost {
public:
    explicit CuttingHost(std::string inFolder) : mFolder(std::move(inFolder)) {}

    bool ReportProgress(double inFraction) override {
        for (const auto& entry : std::filesystem::directory_iterator(mFolder)) {
            const std::string name = entry.path().filename().string();
            if (name != "test.gif" && mSeen.insert(name).second && mSeen.size() > 1)
                std::filesystem::resize_file(entry.path(), 30);
        }
        return TestHost::ReportProgress(inFraction);
    }
    std::string mFolder;
    std::set<std::string> mSeen;
};

TEST_F(GateTest, AResultThatIsRefusedForASmallerToleranceLeavesTheSoundOne) {
    TestGIF gif;
    gif.mWidth = gif.mHeight = 300; // more than is read ahead
    gif.mTable = Greys(256);
    gif.mFrames.assign(6, Textured(TestTexture::km_Noise, 300, 255, 1));
    for (std::size_t i = 0; i < gif.mFrames.size(); ++i) // grain, and soft stripes slowly on the move
        for (std::size_t at = 0; at < 300 * 300; ++at) {
            const double angle = static_cast<double>(at % 300 + at / 300 + i) / 5;
            gif.mFrames[i].mPixels[at] =
                static_cast<std::uint8_t>(gif.mFrames[i].mPixels[at] / 64 + 128 + 13 * std::sin(angle));
        }
    const std::string path = Write(gif);
    const auto size = static_cast<std::uint32_t>(std::filesystem::file_size(path));
    CuttingHost host(mFolder / "pictures");
    PvOptimizer optimizer(host);
    EXPECT_LT(optimizer.OptimizeGIFFile(path.c_str(), size), size);
    EXPECT_GT(host.mSeen.size(), 1u);
    EXPECT_EQ(optimizer.GetOutcome().mGateReason, "");
    EXPECT_EQ(CompareGIFs(gif, ReadGIF(path)).mDifference, "");
}

// The picture is the same, so only the state of the file can show it.
TEST_F(GateTest, AFileSavedAnewMeanwhileStaysAsItWasSaved) {
    const std::string saved = EncodeGIF(Original()) + "with a note behind the trailer";
    for (const bool atBackup : {false, true}) {
        SCOPED_TRACE(atBackup);
        const std::string path = Write(Original());
        MeddlingHost host;
        const auto save = [&] { WriteTestFile(path, saved); };
        (atBackup ? host.mMeddleAtBackup : host.mMeddle) = save;
        PvOptimizer optimizer(host);
        const auto size = static_cast<std::uint32_t>(std::filesystem::file_size(path));
        EXPECT_EQ(optimizer.OptimizeGIFFile(path.c_str(), size), size);
        EXPECT_TRUE(optimizer.GetOutcome().mIsChangedMeanwhile);
        EXPECT_EQ(ReadTestFile(path), saved);
        EXPECT_THAT(Names("pictures"), testing::ElementsAre("test.gif"));
    }
}

// The frames are read more than once: what was learnt from one file must not be applied to another.
TEST_F(GateTest, AFileWrittenOverAtAnyMomentStaysAsItWasWritten) {
    std::size_t writtenOver = 0;
    for (std::uint32_t seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        const std::string path = Write(RandomGIF(seed));
        const std::string other = EncodeGIF(RandomGIF(1000 + seed));
        MeddlingHost host;
        host.mMoment = seed % 15;
        host.mMeddle = [&] { WriteTestFile(path, other); };
        PvOptimizer optimizer(host);
        const auto size = static_cast<std::uint32_t>(std::filesystem::file_size(path));
        EXPECT_EQ(CodeOf([&] { optimizer.OptimizeGIFFile(path.c_str(), size); }), 0u);
        if (host.mMeddle)
            continue;
        ++writtenOver;
        EXPECT_EQ(ReadTestFile(path), other);
    }
    EXPECT_GT(writtenOver, 100u);
}

} // namespace
