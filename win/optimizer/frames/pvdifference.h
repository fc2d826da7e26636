#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "win/optimizer/frames/pvtearguard.h"

class NvColorTable;
class NvConstPixelLock;
class NvGIFFrame;
class NvGIFFrameInfo;

/** Makes a frame's disposal 1 unless it is 2. */
void PvSettleDisposal(NvGIFFrameInfo& ioInfo);

/** Lays an animation's frames down on the screen, one after the other, and makes each frame's pixels
 *  transparent where the screen already shows almost the same colour.
 *
 *  A frame's disposal becomes 1 unless it is 2. Holes of one or two pixels are filled again, since a broken
 *  run costs LZW more than such a hole saves. Only masks change; the caller brings transparency fields up to
 *  date. */
class PvDifferencer {
public:
    /** @param inWidth       of the logical screen, pixels
     *  @param inHeight      of the logical screen, pixels
     *  @param inTolerance   0 to 255 per channel
     *  @param inFullTable   entries of a table that cannot grow: a frame that draws with that many has no
     *  index left for transparent pixels and is drawn whole; 0: there is always an index left
     *  @param inGuardsTears whether pixels that are only nearly right are drawn where the picture would tear,
     *                       see PvTearGuard */
    PvDifferencer(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inTolerance,
                  std::uint32_t inFullTable, bool inGuardsTears = false);

    /** Takes the next frame. Precondition: it does not restore what it covers. */
    void Difference(NvGIFFrame& ioFrame);

private:
    using ScreenColour = std::uint32_t; // packed, the top byte set where the screen shows something

    ScreenColour* ScreenRow(const NvGIFFrameInfo& inInfo, std::uint32_t inRow);
    std::uint8_t* StateRow(const NvGIFFrameInfo& inInfo, std::uint32_t inRow);
    void UseColours(const NvColorTable& inTable);
    void LayDown(const std::uint8_t* inPixels, std::uint32_t inCount, ScreenColour* ioScreen,
                 std::uint8_t* outStates);
    std::size_t FindState(std::size_t inFrom, bool inIsDrawn) const;
    void DrawTears(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels);
    void RepairShortRuns(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels);
    void DrawAgain(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels, std::size_t inPlace);
    bool UsesEveryEntry(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels) const;
    void DrawEverythingAgain(const NvGIFFrameInfo& inInfo, const NvConstPixelLock& inPixels);
    static void StoreMaskRow(const std::uint8_t* inStates, std::uint32_t inWidth, std::uint8_t* outMask);

    std::uint32_t mWidth;
    std::uint8_t mTolerance;
    std::uint32_t mFullTable;
    bool mGuardsTears;
    std::vector<ScreenColour> mScreen;        // row-major
    std::vector<std::uint8_t> mStates;        // PvPixelState of the frame in hand, row-major
    std::array<ScreenColour, 256> mColours{}; // of the frame in hand

    PvTearGuard mTearGuard;

    // Of the run of drawn pixels in hand.
    std::vector<ScreenColour> mFrameColours;
    std::vector<std::uint32_t> mDifferences; // per pixel, a byte for each channel
};
