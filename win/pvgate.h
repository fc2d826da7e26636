#pragma once

#include <string>

/** How far the colours of a displayed frame may be from the original's. */
struct PvColourAllowance {
    double mMeanError = 0.0;   ///< levels per channel, over the covered pixels of a displayed frame
    double mMovedPixels = 0.0; ///< pixels that changed places with a neighbour, in the whole animation
};

/** Plays a candidate beside the file it is to replace, as a viewer would show both.
 *
 *  Nothing may differ but colours: same screen, frames, delays, user input, loop, comments and aspect; in
 * every displayed frame the same pixels covered; and a mean colour error within the allowance. Both are read
 * back from the disk, so that whatever went wrong on the way is noticed here.
 *
 *  @param inOriginalPath   the file as it is
 *  @param inCandidatePath  the very file that would take its place
 *  @return                 empty when the candidate may replace the original; else what a viewer would notice
 *  @throws NvErrorCode     when the original cannot be read any more; a candidate that cannot be read is a
 * reason */
std::string PvCompareGIFs(const char* inOriginalPath, const char* inCandidatePath,
                          const PvColourAllowance& inAllowance);
