#pragma once

#include <cstdint>

#include "win/optimizer/pvfirstpass.h"

class NvAnimation;
class PvProgress;
struct PvTablePlan;

/** What a pass wrote. */
struct PvWritten {
    std::uint32_t mSize = 0;        ///< bytes
    std::uint64_t mMovedPixels = 0; ///< that were exchanged on the way
};

/** The first pass over what PvFirstPass rebuilt: settles undrawn pixels, narrows tables, exchanges pixels.
 *
 *  Like the second, it finishes and writes each frame before it looks at the next one, so only the packed
 *  frames are all in memory.
 *  @param inPath        created or replaced
 *  @param inBackground  what the file's background index named
 *  @throws NvErrorCode  3 when the progress was told to stop; those of NvFile */
PvWritten PvRunFirstPass(const char* inPath, NvAnimation& ioAnimation, PvTablePlan inPlan,
                         const NvColor& inBackground, const PvPassOptions& inOptions, PvProgress& ioProgress);

/** The second pass, over what is on the disk after the first: crops, narrows and exchanges once more.
 *
 *  @throws NvErrorCode  as the first */
PvWritten PvRunSecondPass(const char* inPath, NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                          PvProgress& ioProgress);
