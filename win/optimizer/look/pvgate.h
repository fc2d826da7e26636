#pragma once

#include <string>

#include "win/optimizer/look/pvlook.h"

/** How far the colours of a displayed frame may be from the original's. */
struct PvColourAllowance {
    double mMeanError = 0.0;   ///< levels per channel, over the covered pixels of a displayed frame
    double mMovedPixels = 0.0; ///< pixels that changed places with a neighbour, in the whole animation
};

/** What the gate found. */
struct PvComparison {
    std::string mReason; ///< what a viewer would notice beyond colours; empty when the candidate may replace
                         ///< the original
    PvFrameLook mWorstLook; ///< of the displayed frame that lost most of its structure, among those measured

    double mMeanStructure = 1.0; ///< similarity where the frames show something, over the frames measured

    /** Similarity of the worst frame where it shows something, 1.0 when that is too small an area to judge.
     */
    double GetStructure() const;

    /** Whether structure was lost over an area that the eye does not miss: slow, soft motion that froze and
     *  tore. */
    bool HasLostStructure() const;

    /** Whether a result with a smaller tolerance is worth a look. */
    bool MayLookBetter() const;
};

/** Plays a candidate beside the file it is to replace, as a viewer would show both.
 *
 *  Nothing may differ but colours: same screen, frames, delays, user input, loop, comments and aspect; in
 *  every displayed frame the same pixels covered; and a mean colour error within the allowance. Both are read
 *  back from the disk, so that whatever went wrong on the way is noticed here. How the frames look is
 *  measured for some fifty of them at most, spread evenly, the last one included.
 *
 *  @param inOriginalPath   the file as it is
 *  @param inCandidatePath  the very file that would take its place; when it cannot be read, that is a reason
 *  @throws NvErrorCode     when the original cannot be opened any more; 2 */
PvComparison PvCompareGIFs(const char* inOriginalPath, const char* inCandidatePath,
                           const PvColourAllowance& inAllowance);
