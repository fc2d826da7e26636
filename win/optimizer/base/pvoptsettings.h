#pragma once

#include <cstdint>

#include "win/optimizer/base/pvwork.h"

/** Largest difference per channel at which a pixel counts as the one already on the screen. */
inline constexpr std::uint32_t km_DifferenceTolerance = 28;

/** Most colours of a file that was made smaller with what may be lost by default. */
inline constexpr std::uint32_t km_MostColours = 128;

/** What the optimizer may do to a file, and use for it. */
struct PvOptSettings {
    /** Changes no displayed colour: no palette building, no tolerance, no exchanged pixels. */
    bool mIsLossless = false;
    bool mCropsSingleImages = false; ///< cuts transparent borders off still pictures too
    bool mKeepsTimes = false;        ///< the new file is as old as the one it replaces
    /** Largest difference per channel at which a frame's pixel counts as the one already on the screen, 0 to
     *  km_DifferenceTolerance. Lossless runs use 0. */
    std::uint32_t mTolerance = km_DifferenceTolerance;
    /** Whether the original can be recovered afterwards. If not, a file with damaged frames is left alone,
     * since a repair of the original may show more than is drawn today. */
    bool mKeepsOriginal = false;
    std::uint64_t mMemoryLimit = 0; ///< bytes one file may need; 0: half the physical memory, at least 1 GiB
    std::uint32_t mSecondsOfWork =
        km_UsualSecondsOfWork; ///< that one file may cost, see PvTooMuchWork; 0: any
};
