#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

class NvAnimation;
class PvProgress;
struct NvColor;
struct PvOptSettings;
struct PvTablePlan;

/** What a pass wrote. */
struct PvWritten {
    std::uint32_t mSize = 0; ///< bytes

    /** Pixels of each frame that changed places with a neighbour. */
    std::vector<std::uint32_t> mMovedPixels;
    double mSavedByMoving = 0.0; ///< bytes

    bool HasMovedPixels() const {
        return std::any_of(mMovedPixels.begin(), mMovedPixels.end(),
                           [](std::uint32_t inCount) { return inCount != 0; });
    }
};

/** Finishes what PvRebuilder made and writes it: settles undrawn pixels, narrows tables, exchanges pixels.
 *
 *  As in the second pass, each frame is finished and written before the next one is looked at, so that all
 *  frames are in memory only packed.
 *  @param inPath        created or replaced
 *  @param inBackground  the colour that the file's background index named
 *  @throws NvErrorCode  3 when the host asked to stop; those of NvFile */
PvWritten PvWriteFirstPass(const char* inPath, NvAnimation& ioAnimation, PvTablePlan inPlan,
                           const NvColor& inBackground, const PvOptSettings& inSettings,
                           PvProgress& ioProgress);

/** Crops, narrows and exchanges once more what the first pass left on the disk, and writes it.
 *
 *  @throws NvErrorCode  as the first */
PvWritten PvWriteSecondPass(const char* inPath, NvAnimation& ioAnimation, const PvOptSettings& inSettings,
                            PvProgress& ioProgress);
