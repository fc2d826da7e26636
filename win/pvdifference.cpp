#include "win/pvdifference.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvassert.h"
#include "win/pvprogress.h"

namespace {

/** Which pairs of a table's colours differ by no more than a tolerance in each channel. */
class CloseColours {
public:
    explicit CloseColours(std::uint32_t inTolerance)
        : mTolerance(static_cast<int>(inTolerance)), mClose(256 * 256, 0) {}

    void Use(const NvColorTable& inTable) {
        if (mIsPrepared && inTable == mTable)
            return;
        mTable = inTable;
        mIsPrepared = true;
        for (std::uint32_t i = 0; i < mTable.GetSize(); ++i)
            for (std::uint32_t j = 0; j < mTable.GetSize(); ++j)
                mClose[i * 256 + j] = AreClose(mTable.GetColor(i), mTable.GetColor(j)) ? 1 : 0;
    }

    bool operator()(std::uint8_t inIndex1, std::uint8_t inIndex2) const {
        return mClose[inIndex1 * 256U + inIndex2] != 0;
    }

private:
    bool AreClose(const NvColor& inColor1, const NvColor& inColor2) const {
        return std::abs(inColor1.red - inColor2.red) <= mTolerance &&
               std::abs(inColor1.green - inColor2.green) <= mTolerance &&
               std::abs(inColor1.blue - inColor2.blue) <= mTolerance;
    }

    int mTolerance;
    bool mIsPrepared = false;
    NvColorTable mTable;
    std::vector<std::uint8_t> mClose; // [index * 256 + index]
};

enum PixelState : std::uint8_t {
    km_Undrawn,
    km_Drawn,
    km_MadeTransparent, // drawn in the frame, shown by the screen already
};

/** What the screen shows, as indices of the shared table. */
class Differencer {
public:
    Differencer(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inTolerance)
        : mWidth(inWidth),
          mScreen(std::size_t{inWidth} * inHeight, 0),
          mCovered(std::size_t{inWidth} * inHeight, 0),
          mClose(inTolerance) {}

    void Difference(NvGIFFrame& ioFrame) {
        NvGIFFrameInfo& info = ioFrame.GetInfo();
        if (info.mDisposal != NvGIFFrameInfo::km_DisposeClear)
            info.mDisposal = NvGIFFrameInfo::km_DisposeLeave;
        mClose.Use(ioFrame.GetImage().GetColorTable());
        mStates.assign(std::size_t{info.mWidth} * info.mHeight, km_Undrawn);

        const NvConstPixelLock pixels(ioFrame.GetImage());
        const NvPixelLock mask(ioFrame.GetMask());
        const std::uint32_t width = info.mWidth;
        for (std::uint32_t y = 0; y < info.mHeight; ++y)
            LayDownRow(pixels.Row(y), mask.Row(y), width, ScreenOffset(info, y),
                       &mStates[std::size_t{y} * width]);
        RepairShortRuns(info, pixels);
        if (info.mDisposal == NvGIFFrameInfo::km_DisposeClear)
            for (std::uint32_t y = 0; y < info.mHeight; ++y)
                std::fill_n(mCovered.begin() + static_cast<std::ptrdiff_t>(ScreenOffset(info, y)), width,
                            std::uint8_t{0});
        for (std::uint32_t y = 0; y < info.mHeight; ++y)
            StoreMaskRow(&mStates[std::size_t{y} * width], width, mask.Row(y));
    }

private:
    std::size_t ScreenOffset(const NvGIFFrameInfo& inInfo, std::uint32_t inRow) const {
        return (std::size_t{inInfo.mTop} + inRow) * mWidth + inInfo.mLeft;
    }

    void LayDownRow(const std::uint8_t* inPixels, const std::uint8_t* inMask, std::uint32_t inWidth,
                    std::size_t inOffset, std::uint8_t* outStates) {
        std::uint8_t* screen = &mScreen[inOffset];
        std::uint8_t* covered = &mCovered[inOffset];
        for (std::uint32_t x = 0; x < inWidth; ++x) {
            if (!(inMask[x / 8] & (0x80U >> x % 8)))
                continue;
            if (covered[x] && mClose(screen[x], inPixels[x])) {
                outStates[x] = km_MadeTransparent;
                continue;
            }
            outStates[x] = km_Drawn;
            covered[x] = 1;
            screen[x] = inPixels[x];
        }
    }

    // Runs count on across row ends, as the LZW data does. A pixel that is drawn again is what the viewer
    // sees from now on, so the screen takes it; otherwise errors could add up to twice the tolerance.
    void RepairShortRuns(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) {
        if (mStates[0] == km_MadeTransparent)
            mStates[0] = km_Undrawn;
        std::size_t run = 0;
        for (std::size_t i = 0; i < mStates.size(); ++i) {
            if (mStates[i] != km_Drawn) {
                ++run;
                continue;
            }
            if (run == 1 || run == 2)
                for (std::size_t j = i; j > 0 && mStates[j - 1] == km_MadeTransparent; --j)
                    DrawAgain(inInfo, inPixels, j - 1);
            run = 0;
        }
    }

    void DrawAgain(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels, std::size_t inPlace) {
        const auto y = static_cast<std::uint32_t>(inPlace / inInfo.mWidth);
        const std::size_t x = inPlace % inInfo.mWidth;
        mStates[inPlace] = km_Drawn;
        mScreen[ScreenOffset(inInfo, y) + x] = inPixels.Row(y)[x];
    }

    static void StoreMaskRow(const std::uint8_t* inStates, std::uint32_t inWidth, std::uint8_t* outMask) {
        for (std::uint32_t x = 0; x < inWidth; x += 8) {
            const std::uint32_t count = std::min(inWidth - x, 8U);
            unsigned drawn = 0;
            for (std::uint32_t i = 0; i < count; ++i)
                drawn = drawn << 1 | (inStates[x + i] == km_Drawn ? 1U : 0U);
            outMask[x / 8] = static_cast<std::uint8_t>(drawn << (8 - count));
        }
    }

    std::uint32_t mWidth;
    std::vector<std::uint8_t> mScreen;  // index shown, row-major
    std::vector<std::uint8_t> mCovered; // 1 where the screen shows something
    std::vector<std::uint8_t> mStates;  // PixelState of the frame in hand, row-major
    CloseColours mClose;
};

} // namespace

void DifferenceFrames(NvAnimation& ioAnimation, std::uint32_t inTolerance, std::uint32_t inTableLimit,
                      PvProgress& ioProgress) {
    Differencer differencer(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight(), inTolerance);
    const std::uint32_t count = ioAnimation.GetFrameCount();
    for (std::uint32_t i = 0; i < count; ++i) {
        ioProgress.ReportFrame(i, count);
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        NvAssert(!frame.GetInfo().RestoresPrevious());
        differencer.Difference(frame);
        frame.UpdateTransparency(ioAnimation.GetSharedTableOf(frame), inTableLimit);
    }
}
