#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "win/optimizer/frames/pvcoverage.h"
#include "win/optimizer/frames/pvcrop.h"
#include "win/optimizer/frames/pvflatten.h"

class NvColorTable;
class NvGIFFrame;
class NvGIFFrameReader;

/** Reads a file's frames one after the other and makes them ready for the first pass: none restores what it
 *  covered, none clears what the next one draws over anyway, none has transparent borders. Two are in memory
 *  at most. What is displayed stays as it is but for colours that flattening had to reduce. */
class PvFrameStream {
public:
    /** @param inReader  borrowed
     *  @param inCrops   whether transparent borders are cut off */
    PvFrameStream(NvGIFFrameReader& inReader, bool inCrops);

    /** @return             the next frame; null behind the last one
     *  @throws NvErrorCode  28 and 18 for corrupt image data, 2 */
    std::unique_ptr<NvGIFFrame> Next();

    /** Whether a frame of the file may be cleared when its time is over. */
    bool MayClear() const { return mFlattener || mCoverage; }

    bool Crops() const { return mCropper.has_value(); }

    /** The largest mean error so far that flattening made, levels per channel. */
    double GetFlattenError() const { return mFlattener ? mFlattener->GetError() : 0.0; }

private:
    std::unique_ptr<NvGIFFrame> Read();
    void SettleDisposal(NvGIFFrame& ioFrame, const NvGIFFrame& inNext);
    NvColorTable* SharedTableOf(const NvGIFFrame& inFrame) const;

    NvGIFFrameReader& mReader;
    std::optional<PvFlattener> mFlattener; // where frames restore
    std::optional<PvCoverage> mCoverage;   // where frames only clear
    std::optional<PvCropper> mCropper;
    std::uint32_t mRead = 0;            // frames
    std::unique_ptr<NvGIFFrame> mAhead; // the one behind that returned last, where disposals depend on it
};
