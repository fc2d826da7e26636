#include "win/pvdifference.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvassert.h"
#include "win/pvprogress.h"

namespace {

enum PixelState : std::uint8_t {
    km_Undrawn,
    km_Drawn,
    km_MadeTransparent, // drawn in the frame, shown by the screen already
};

using ScreenColour = std::uint32_t; // packed, the top byte set where the screen shows something
constexpr ScreenColour km_Covered = 0xFF000000U;

/** Lays frames down on the screen, one after the other, and finds what each need not draw. */
class Differencer {
public:
    Differencer(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inTolerance)
        : mWidth(inWidth),
          mTolerance(static_cast<int>(inTolerance)),
          mScreen(std::size_t{inWidth} * inHeight, 0) {}

    /** @param inTableLimit  entries that the frame's table may have at most */
    void Difference(NvGIFFrame& ioFrame, std::uint32_t inTableLimit) {
        NvGIFFrameInfo& info = ioFrame.GetInfo();
        if (info.mDisposal != NvGIFFrameInfo::km_DisposeClear)
            info.mDisposal = NvGIFFrameInfo::km_DisposeLeave;
        UseColours(ioFrame.GetImage().GetColorTable());
        mStates.assign(std::size_t{info.mWidth} * info.mHeight, km_Undrawn);

        const NvConstPixelLock pixels(ioFrame.GetImage());
        const NvPixelLock mask(ioFrame.GetMask());
        for (std::uint32_t y = 0; y < info.mHeight; ++y)
            LayDownRow(pixels.Row(y), mask.Row(y), info.mWidth, ScreenRow(info, y), StateRow(info, y));
        RepairShortRuns(info, pixels);
        if (ioFrame.GetImage().GetColorTable().GetSize() >= inTableLimit &&
            UsesEveryEntry(info, pixels, inTableLimit))
            DrawEverythingAgain(info, pixels);
        if (info.mDisposal == NvGIFFrameInfo::km_DisposeClear)
            for (std::uint32_t y = 0; y < info.mHeight; ++y)
                std::fill_n(ScreenRow(info, y), info.mWidth, ScreenColour{0});
        for (std::uint32_t y = 0; y < info.mHeight; ++y)
            StoreMaskRow(StateRow(info, y), info.mWidth, mask.Row(y));
    }

private:
    ScreenColour* ScreenRow(const NvGIFFrameInfo& inInfo, std::uint32_t inRow) {
        return mScreen.data() + (std::size_t{inInfo.mTop} + inRow) * mWidth + inInfo.mLeft;
    }

    std::uint8_t* StateRow(const NvGIFFrameInfo& inInfo, std::uint32_t inRow) {
        return mStates.data() + std::size_t{inRow} * inInfo.mWidth;
    }

    void UseColours(const NvColorTable& inTable) {
        for (std::uint32_t i = 0; i < std::min(inTable.GetSize(), 256U); ++i)
            mColours[i] = NvPackColor(inTable.GetColor(i)) | km_Covered;
    }

    bool AreClose(ScreenColour inColour1, ScreenColour inColour2) const {
        for (int shift = 0; shift < 24; shift += 8) {
            const int difference =
                static_cast<int>((inColour1 >> shift) & 0xFF) - static_cast<int>((inColour2 >> shift) & 0xFF);
            if (std::abs(difference) > mTolerance)
                return false;
        }
        return true;
    }

    void LayDownRow(const std::uint8_t* inPixels, const std::uint8_t* inMask, std::uint32_t inWidth,
                    ScreenColour* ioScreen, std::uint8_t* outStates) const {
        for (std::uint32_t x = 0; x < inWidth; ++x) {
            if (!(inMask[x / 8] & (0x80U >> x % 8)))
                continue;
            const ScreenColour colour = mColours[inPixels[x]];
            if (ioScreen[x] == colour || (ioScreen[x] != 0 && AreClose(ioScreen[x], colour))) {
                outStates[x] = km_MadeTransparent;
                continue;
            }
            outStates[x] = km_Drawn;
            ioScreen[x] = colour;
        }
    }

    // Runs count on across row ends, as the LZW data does. A pixel that is drawn again is what the viewer
    // sees from now on, so the screen takes it; otherwise errors could add up to twice the tolerance.
    void RepairShortRuns(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) {
        const bool firstMadeTransparent = mStates[0] == km_MadeTransparent;
        if (firstMadeTransparent)
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
        if (firstMadeTransparent)
            mStates[0] = km_MadeTransparent;
    }

    void DrawAgain(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels, std::size_t inPlace) {
        const auto y = static_cast<std::uint32_t>(inPlace / inInfo.mWidth);
        const std::size_t x = inPlace % inInfo.mWidth;
        mStates[inPlace] = km_Drawn;
        ScreenRow(inInfo, y)[x] = mColours[inPixels.Row(y)[x]];
    }

    // Without an entry to spare there is no transparent index to give to the pixels left out.
    bool UsesEveryEntry(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels,
                        std::uint32_t inEntries) const {
        std::array<bool, 256> used{};
        for (std::size_t i = 0; i < mStates.size(); ++i)
            if (mStates[i] == km_Drawn)
                used[inPixels.Row(static_cast<std::uint32_t>(i / inInfo.mWidth))[i % inInfo.mWidth]] = true;
        return static_cast<std::uint32_t>(std::count(used.begin(), used.end(), true)) >= inEntries;
    }

    void DrawEverythingAgain(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) {
        for (std::size_t i = 0; i < mStates.size(); ++i)
            if (mStates[i] == km_MadeTransparent)
                DrawAgain(inInfo, inPixels, i);
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
    int mTolerance;
    std::vector<ScreenColour> mScreen;        // row-major
    std::vector<std::uint8_t> mStates;        // PixelState of the frame in hand, row-major
    std::array<ScreenColour, 256> mColours{}; // of the frame in hand
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
        differencer.Difference(frame, inTableLimit);
        frame.UpdateTransparency(ioAnimation.GetSharedTableOf(frame), inTableLimit);
    }
}
