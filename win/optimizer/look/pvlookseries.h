#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/look/pvlook.h"

/** Calls inVisit(y, columns) for each row that the last frame may have changed on either canvas. */
template <typename Visitor>
void PvForEachChangedRow(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond, Visitor inVisit) {
    const auto [first, second] = inFirst.GetChangedRows();
    const auto [third, fourth] = inSecond.GetChangedRows();
    NvGIFPlayer::ForEachRow(std::array{first, second, third, fourth}, [&](std::uint32_t inY) {
        NvGIFPlayer::Columns changed = inFirst.GetChangedColumns(inY);
        changed.Add(inSecond.GetChangedColumns(inY));
        inVisit(inY, changed);
    });
}

/** Similarity over the area where a frame shows something; 1.0 when that area is too small to judge. */
double PvStructureOf(const PvFrameLook& inLook);

/** Measures how close an animation looks to another, on at most 48 of its frames, spread evenly, the last one
 *  included. */
class PvLookSeries {
public:
    /** @param inWidth       of both canvases, pixels
     *  @param inHeight      of both canvases, pixels
     *  @param inFrameCount  number of ShowFrame calls to come */
    PvLookSeries(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inFrameCount);

    /** Takes what both canvases show now as the next frame.
     *  @return  whether it is the worst so far */
    bool ShowFrame(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond);

    /** The similarity of the measured frame that lost most of its structure. */
    const PvFrameLook& GetWorst() const { return mWorst; }

    /** Mean of PvStructureOf over the measured frames; 1.0 without any. */
    double GetMeanStructure() const { return mCount == 0 ? 1.0 : mStructureSum / mCount; }

private:
    bool Add(const PvFrameLook& inLook);

    PvLookMeter mMeter;
    std::uint32_t mFramesLeft;
    std::uint32_t mMeasureEvery;
    std::vector<NvGIFPlayer::Columns> mChanged; // of every row, since the last measurement
    PvFrameLook mWorst;
    double mStructureSum = 0.0;
    std::uint32_t mCount = 0;
};
