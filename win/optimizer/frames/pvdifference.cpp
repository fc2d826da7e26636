#include "win/optimizer/frames/pvdifference.h"

#include <algorithm>
#include <bit>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nvbytes.h"
#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/image/nvmaskrow.h"

namespace {

constexpr std::uint32_t km_Covered = 0xFF000000U;

// Levels of a channel. Pixels that are off by no more are noise, and may stay where the picture would tear.
constexpr std::uint32_t km_UnseenError = 6;

bool IsSeen(std::uint32_t inFirst, std::uint32_t inSecond) {
    const auto differs = [&](std::uint32_t inShift) {
        const std::uint32_t first = (inFirst >> inShift) & 0xFF;
        const std::uint32_t second = (inSecond >> inShift) & 0xFF;
        return std::max(first, second) - std::min(first, second) > km_UnseenError;
    };
    return differs(0) || differs(8) || differs(16);
}

} // namespace

void PvSettleDisposal(NvGIFFrameInfo& ioInfo) {
    if (ioInfo.mDisposal != NvGIFFrameInfo::km_DisposeClear)
        ioInfo.mDisposal = NvGIFFrameInfo::km_DisposeLeave;
}

PvDifferencer::PvDifferencer(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inTolerance,
                             std::uint32_t inFullTable, bool inGuardsTears)
    : mWidth(inWidth),
      mTolerance(static_cast<std::uint8_t>(inTolerance)),
      mFullTable(inFullTable),
      mGuardsTears(inGuardsTears && inTolerance > km_UnseenError),
      mScreen(std::size_t{inWidth} * inHeight, 0),
      mFrameColours(inWidth),
      mDifferences(inWidth) {}

void PvDifferencer::Difference(NvGIFFrame& ioFrame) {
    NvAssert(!ioFrame.GetInfo().RestoresPrevious());
    NvGIFFrameInfo& info = ioFrame.GetInfo();
    PvSettleDisposal(info);
    UseColours(ioFrame.GetImage().GetColorTable());
    mStates.assign(std::size_t{info.mWidth} * info.mHeight, km_Undrawn);

    const NvConstPixelLock pixels(ioFrame.GetImage());
    const NvPixelLock mask(ioFrame.GetMask());
    for (std::uint32_t y = 0; y < info.mHeight; ++y)
        NvForEachRun(mask.Row(y), info.mWidth, true, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            LayDown(pixels.Row(y) + inFirst, inEnd - inFirst, ScreenRow(info, y) + inFirst,
                    StateRow(info, y) + inFirst);
        });
    if (mGuardsTears)
        DrawTears(info, pixels);
    RepairShortRuns(info, pixels);
    if (mFullTable > 0 && ioFrame.GetImage().GetColorTable().GetSize() >= mFullTable &&
        UsesEveryEntry(info, pixels))
        DrawEverythingAgain(info, pixels);
    if (info.mDisposal == NvGIFFrameInfo::km_DisposeClear)
        for (std::uint32_t y = 0; y < info.mHeight; ++y)
            std::fill_n(ScreenRow(info, y), info.mWidth, ScreenColour{0});
    for (std::uint32_t y = 0; y < info.mHeight; ++y)
        StoreMaskRow(StateRow(info, y), info.mWidth, mask.Row(y));
}

PvDifferencer::ScreenColour* PvDifferencer::ScreenRow(const NvGIFFrameInfo& inInfo, std::uint32_t inRow) {
    return mScreen.data() + (std::size_t{inInfo.mTop} + inRow) * mWidth + inInfo.mLeft;
}

std::uint8_t* PvDifferencer::StateRow(const NvGIFFrameInfo& inInfo, std::uint32_t inRow) {
    return mStates.data() + std::size_t{inRow} * inInfo.mWidth;
}

void PvDifferencer::UseColours(const NvColorTable& inTable) {
    for (std::uint32_t i = 0; i < std::min(inTable.GetSize(), 256U); ++i)
        mColours[i] = NvPackColor(inTable.GetColor(i)) | km_Covered;
}

// Separate loops over all pixels, which compilers turn into vector code: channels are compared as bytes,
// sixteen at once.
void PvDifferencer::LayDown(const std::uint8_t* inPixels, std::uint32_t inCount, ScreenColour* ioScreen,
                            std::uint8_t* outStates) {
    for (std::uint32_t i = 0; i < inCount; ++i)
        mFrameColours[i] = mColours[inPixels[i]];
    const auto* frame = reinterpret_cast<const std::uint8_t*>(mFrameColours.data());
    const auto* screen = reinterpret_cast<const std::uint8_t*>(ioScreen);
    auto* differences = reinterpret_cast<std::uint8_t*>(mDifferences.data());
    const std::uint8_t tolerance = mTolerance;
    for (std::uint32_t i = 0; i < 4 * inCount; ++i) {
        const auto difference =
            static_cast<std::uint8_t>(frame[i] > screen[i] ? frame[i] - screen[i] : screen[i] - frame[i]);
        differences[i] = difference > tolerance ? 1 : 0;
    }
    // What nothing covers yet differs in the fourth byte.
    const std::uint32_t* areDrawn = mDifferences.data();
    const ScreenColour* colours = mFrameColours.data();
    for (std::uint32_t i = 0; i < inCount; ++i)
        ioScreen[i] = areDrawn[i] != 0 ? colours[i] : ioScreen[i];
    for (std::uint32_t i = 0; i < inCount; ++i)
        outStates[i] = areDrawn[i] != 0 ? km_Drawn : km_MadeTransparent;
}

/** The first place from inFrom on that is drawn, or is not, as inIsDrawn says; the number of places when
 *  there is none. */
std::size_t PvDifferencer::FindState(std::size_t inFrom, bool inIsDrawn) const {
    const std::size_t count = mStates.size();
    std::size_t i = inFrom;
    for (; i + 8 <= count; i += 8) {
        const std::uint64_t drawn = NvFindZeroBytes(NvLoadLittleEndian(&mStates[i]) ^ NvEightOf(km_Drawn));
        const std::uint64_t found = inIsDrawn ? drawn : drawn ^ NvEightOf(0x80);
        if (found != 0)
            return i + static_cast<std::size_t>(std::countr_zero(found)) / 8;
    }
    while (i < count && (mStates[i] == km_Drawn) != inIsDrawn)
        ++i;
    return i;
}

void PvDifferencer::DrawTears(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) {
    const PvLaidFrame frame{inInfo.mWidth,
                            inInfo.mHeight,
                            [&](std::uint32_t inY) { return inPixels.Row(inY); },
                            [&](std::uint32_t inY) { return ScreenRow(inInfo, inY); },
                            [&](std::uint32_t inY) { return StateRow(inInfo, inY); },
                            mColours.data()};
    mTearGuard.VisitTears(frame, [&](std::uint32_t inY, std::uint32_t inFirst, std::uint32_t inEnd) {
        const std::uint8_t* states = StateRow(inInfo, inY);
        for (std::uint32_t x = inFirst; x < inEnd; ++x)
            if (states[x] == km_MadeTransparent &&
                IsSeen(mColours[inPixels.Row(inY)[x]], ScreenRow(inInfo, inY)[x]))
                DrawAgain(inInfo, inPixels, std::size_t{inY} * inInfo.mWidth + x);
    });
}

// Runs continue across row ends, as LZW data does. A pixel drawn again is what the viewer sees from now on,
// so the screen takes its colour; otherwise errors could add up to twice the tolerance.
void PvDifferencer::RepairShortRuns(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) {
    const bool firstMadeTransparent = mStates[0] == km_MadeTransparent;
    if (firstMadeTransparent)
        mStates[0] = km_Undrawn;
    for (std::size_t begin = 0; begin < mStates.size();) {
        const std::size_t end = FindState(begin, true);
        const bool isShort = end - begin == 1 || end - begin == 2;
        if (isShort && end < mStates.size())
            for (std::size_t i = end; i > 0 && mStates[i - 1] == km_MadeTransparent; --i)
                DrawAgain(inInfo, inPixels, i - 1);
        begin = FindState(end, false);
    }
    if (firstMadeTransparent)
        mStates[0] = km_MadeTransparent;
}

void PvDifferencer::DrawAgain(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels,
                              std::size_t inPlace) {
    const auto y = static_cast<std::uint32_t>(inPlace / inInfo.mWidth);
    const std::size_t x = inPlace % inInfo.mWidth;
    mStates[inPlace] = km_Drawn;
    ScreenRow(inInfo, y)[x] = mColours[inPixels.Row(y)[x]];
}

// A frame that draws with every entry has none left for the pixels that are not drawn.
bool PvDifferencer::UsesEveryEntry(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) const {
    std::array<bool, 256> used{};
    for (std::size_t i = 0; i < mStates.size(); ++i)
        if (mStates[i] == km_Drawn)
            used[inPixels.Row(static_cast<std::uint32_t>(i / inInfo.mWidth))[i % inInfo.mWidth]] = true;
    return static_cast<std::uint32_t>(std::count(used.begin(), used.end(), true)) >= mFullTable;
}

void PvDifferencer::DrawEverythingAgain(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) {
    for (std::size_t i = 0; i < mStates.size(); ++i)
        if (mStates[i] == km_MadeTransparent)
            DrawAgain(inInfo, inPixels, i);
}

void PvDifferencer::StoreMaskRow(const std::uint8_t* inStates, std::uint32_t inWidth, std::uint8_t* outMask) {
    const std::uint32_t wholeBytes = inWidth / 8;
    for (std::uint32_t i = 0; i < wholeBytes; ++i)
        outMask[i] = NvBitsOfEight(inStates + 8 * i, km_Drawn);
    if (inWidth % 8 != 0) {
        std::array<std::uint8_t, 8> last{}; // km_Undrawn
        std::copy(inStates + 8 * wholeBytes, inStates + inWidth, last.begin());
        outMask[wholeBytes] = NvBitsOfEight(last.data(), km_Drawn);
    }
}
