#pragma once

#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "tests/support/testgif.h"
#include "win/optimizer/base/pvopthost.h"
#include "win/optimizer/base/pvprogress.h"

/** An animation whose frames are at hand. */
struct TestAnimation {
    TestAnimation(std::shared_ptr<NvGIFGlobalInfo> inInfo, std::uint32_t inWidth, std::uint32_t inHeight)
        : mInfo(std::move(inInfo)), mWidth(inWidth), mHeight(inHeight) {}
    explicit TestAnimation(const NvAnimation& inPacked);

    NvGIFFrame& GetFrame(std::size_t inIndex) const { return *mFrames.at(inIndex); }
    /** The shared table for a frame that uses it. */
    NvColorTable* GetSharedTableOf(const NvGIFFrame& inFrame) const {
        return inFrame.GetInfo().mHasLocalTable ? nullptr : &mInfo->mColorTable;
    }
    std::unique_ptr<NvAnimation> Pack() const;

    std::shared_ptr<NvGIFGlobalInfo> mInfo;
    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::vector<std::unique_ptr<NvGIFFrame>> mFrames;
};

/** The animation in memory that loading a sound file of this content would give. */
std::unique_ptr<TestAnimation> MakeAnimation(const TestGIF& inGIF);

/** What an animation in memory says, so that it can be played and compared. Fails the test when mask,
 *  indices, tables and transparency fields of a frame contradict each other. */
TestGIF Describe(const TestAnimation& inAnimation);

/** A file without its frames, and one frame of it, from what the library has read. */
TestGIF Describe(const NvGIFGlobalInfo& inInfo, std::uint32_t inWidth, std::uint32_t inHeight);
TestFrame Describe(const NvGIFFrameInfo& inInfo, const NvIndexedImage& inImage);

/** What a player displays, in the terms of the plain player. */
TestCanvas CanvasOf(const NvGIFPlayer& inPlayer);

/** A frame's pixels as Picture takes them, with drawn indices above 9 as letters; undrawn ones are '.'. */
std::string Rows(const NvGIFFrame& inFrame);

/** A program around the optimizer that remembers, and interferes where a test wants it. */
class TestHost : public PvOptHost {
public:
    void BackupFile(const char* inPath) override;
    bool ReportProgress(double inFraction) override;

    std::vector<std::string> mBackups; // the files' bytes when their backup was asked for
    std::vector<double> mProgress;     // every report of this file
    std::size_t mStopAt = SIZE_MAX;    // number of the report that is answered with "stop"
};
