#pragma once

#include <cstdint>

#include "win/pvfirstpass.h"
#include "win/pvswap.h"

class NvAnimation;
class PvProgress;

/** The two passes over an animation: which steps, in which order. */
class PvPasses {
public:
    /** The first pass over what PvFirstPass rebuilt.
     *
     *  @param inBackground  what the file's background index named
     *  @return              how many pixels were exchanged on the way
     *  @throws NvErrorCode  3 when the progress was told to stop */
    std::uint64_t RunFirst(NvAnimation& ioAnimation, const NvColor& inBackground,
                           const PvPassOptions& inOptions, PvProgress& ioProgress);

    /** The second pass, over what is on the disk after the first: crops and exchanges pixels once more.
     *
     *  @return              how many pixels were exchanged
     *  @throws NvErrorCode  3 when the progress was told to stop */
    std::uint64_t RunSecond(NvAnimation& ioAnimation, const PvPassOptions& inOptions, PvProgress& ioProgress);

private:
    std::uint64_t Finish(NvAnimation& ioAnimation, const NvColor& inBackground,
                         const PvPassOptions& inOptions, PvProgress& ioProgress);

    PvPixelSwapper mSwapper;
};
