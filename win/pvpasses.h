#pragma once

#include <cstdint>

#include "win/pvfirstpass.h"
#include "win/pvswap.h"
#include "win/pvwrite.h"

class NvAnimation;
class NvLZWStringTable;
class PvProgress;
struct PvTablePlan;

/** What a pass wrote. */
struct PvWritten {
    std::uint32_t mSize = 0;        ///< bytes
    std::uint64_t mMovedPixels = 0; ///< that were exchanged on the way
};

/** What the two passes over an animation do to its frames, and in which order. Each frame is finished and
 *  written before the next one is looked at, so only the packed frames are all in memory. */
class PvPasses {
public:
    /** The first pass over what PvFirstPass rebuilt.
     *
     *  @param inPath        created or replaced
     *  @param inBackground  what the file's background index named
     *  @throws NvErrorCode  3 when the progress was told to stop; those of NvFile */
    PvWritten RunFirst(const char* inPath, NvAnimation& ioAnimation, PvTablePlan inPlan,
                       const NvColor& inBackground, const PvPassOptions& inOptions, PvProgress& ioProgress);

    /** The second pass, over what is on the disk after the first: crops and exchanges pixels once more.
     *
     *  @throws NvErrorCode  as RunFirst */
    PvWritten RunSecond(const char* inPath, NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                        PvProgress& ioProgress);

private:
    PvWritten Write(const char* inPath, NvAnimation& ioAnimation, const PvFrameFinisher& inPrepare,
                    NvLZWStringTable& ioStrings, const PvPassOptions& inOptions, PvProgress& ioProgress);
};
