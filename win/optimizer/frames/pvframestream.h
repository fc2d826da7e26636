#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "win/optimizer/base/pvwork.h"
#include "win/optimizer/frames/pvcoverage.h"
#include "win/optimizer/frames/pvcrop.h"
#include "win/optimizer/frames/pvflatten.h"

class NvColorTable;
class NvGIFFrame;
class NvGIFFrameReader;

/** Raised when frames that restore nothing would be out of all proportion to those in the file: where small
 *  frames far from each other lie over a large background, each must reach from one to the other. */
struct PvSprawlingFrames : PvTooMuchWork {};

/** Reads a file's frames one after the other and prepares them for the first pass: none restores what it
 *  covered, none clears what the next one draws over anyway, none has transparent borders. At most two frames
 *  are in memory. The display stays the same but for colours that flattening had to reduce. */
class PvFrameStream {
public:
    /** @param inReader  borrowed
     *  @param inCrops   whether transparent borders are cut off */
    PvFrameStream(NvGIFFrameReader& inReader, bool inCrops);

    /** @return             the next frame; null after the last one
     *  @throws NvErrorCode  28 and 18 for corrupt image data, 2
     *  @throws PvSprawlingFrames */
    std::unique_ptr<NvGIFFrame> Next();

    /** Whether any frame may be cleared before the next. */
    bool MayClear() const { return mFlattener || mCoverage; }

    bool Crops() const { return mCropper.has_value(); }

    /** What flattening made of colours so far; null when it does not take place. */
    const PvColourErrors* GetFlattenErrors() const { return mFlattener ? &mFlattener->GetErrors() : nullptr; }

private:
    std::unique_ptr<NvGIFFrame> Read();
    std::unique_ptr<NvGIFFrame> NextFlattened();
    std::unique_ptr<NvGIFFrame> NextAsRead();
    void SettleDisposal(NvGIFFrame& ioFrame, const NvGIFFrame& inNext);
    NvColorTable* SharedTableOf(const NvGIFFrame& inFrame) const;

    NvGIFFrameReader& mReader;
    std::optional<PvFlattener> mFlattener; // where frames restore
    std::optional<PvCoverage> mCoverage;   // where frames only clear
    std::optional<PvCropper> mCropper;
    std::uint32_t mRead = 0;            // frames
    bool mIsFinished = false;           // flattening
    std::uint64_t mFlattened = 0;       // pixels
    std::unique_ptr<NvGIFFrame> mAhead; // the frame to return next, where disposals depend on it
};
