#pragma once

#include <cstdint>
#include <vector>

#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/look/pvlook.h"

/** The part of a row that the last frame may have changed on either canvas. */
NvGIFPlayer::Columns PvChangedColumns(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond,
                                      std::uint32_t inY);

/** Similarity of a frame where it shows something, 1.0 when that is too small an area to judge. */
double PvStructureOf(const PvFrameLook& inLook);

/** How close an animation looks to another: measured for some fifty of its frames at most, spread evenly, the
 *  last one included. */
class PvLookSeries {
public:
    /** @param inWidth       of both canvases, pixels
     *  @param inHeight      of both canvases, pixels
     *  @param inFrameCount  how often ShowFrame will be called */
    PvLookSeries(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inFrameCount);

    /** Takes what both canvases show as the next frame. */
    void ShowFrame(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond);

    /** Of the frame that lost most of its structure, among those measured. */
    const PvFrameLook& GetWorst() const { return mWorst; }

    /** Similarity where the frames show something, over the frames measured; 1.0 without any. */
    double GetMeanStructure() const { return mCount == 0 ? 1.0 : mStructureSum / mCount; }

private:
    void Add(const PvFrameLook& inLook, const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond);

    PvLookMeter mMeter;
    std::uint32_t mFramesLeft;
    std::uint32_t mMeasureEvery;
    std::vector<NvGIFPlayer::Columns> mChanged; // of every row, since the last measurement
    PvFrameLook mWorst;
    double mStructureSum = 0.0;
    std::uint32_t mCount = 0;
};
