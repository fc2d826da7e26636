#pragma once

#include <cstdint>
#include <optional>

#include "win/pvgate.h"
#include "win/pvswap.h"

class NvAnimation;
class PvProgress;
struct NvColor;

/** How a pass may change an animation. */
struct PvPassOptions {
    bool mIsLossless = false;        ///< no displayed colour changes
    bool mCropsSingleImages = false; ///< a still picture may lose its transparent borders
    std::uint32_t mTolerance = 0;    ///< levels per channel, see DifferenceFrames; not used when lossless
    std::uint32_t mSizeToBeat = 0;   ///< bytes; 0: none. A pass that will not get below it may be given up
};

/** The two passes over an animation in memory: which steps, in which order. */
class PvPasses {
public:
    /** The first pass: one small palette, nothing drawn that the screen shows already, tight frames.
     *
     *  @return              how far the colours may be from the original's by now; nothing when the result
     *                       would be far from small enough
     *  @throws NvErrorCode  3 when the progress was told to stop */
    std::optional<PvColourAllowance> RunFirst(NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                                              PvProgress& ioProgress);

    /** The second pass, over what is on the disk after the first: crops and exchanges pixels once more. */
    PvColourAllowance RunSecond(NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                                PvProgress& ioProgress);

private:
    void Finish(NvAnimation& ioAnimation, const NvColor& inBackground, const PvPassOptions& inOptions,
                PvColourAllowance& ioAllowance, PvProgress& ioProgress);

    PvPixelSwapper mSwapper;
};
