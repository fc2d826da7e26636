#pragma once

#include <string>

#include "win/optimizer/base/pvframelook.h"
#include "win/optimizer/look/pvcanvascomparison.h"

class PvProgress;

/** What the gate found. */
struct PvComparison {
    /** What a viewer would notice, colours beyond the allowance included; empty when the candidate may
     *  replace the original. */
    std::string mReason;

    /** The look of the measured frame that lost most of its structure. */
    PvFrameLook mWorstLook;

    /** Similarity over the area where frames show something, the mean over the measured frames. */
    double mMeanStructure = 1.0;

    /** Similarity of the worst frame over the area where it shows something; 1.0 when that area is too small
     *  to judge. */
    double GetStructure() const;

    /** Whether structure was lost over an area large enough to be seen: slow, soft motion that froze and
     *  tore. */
    bool HasLostStructure() const;

    /** Whether a smaller tolerance may look better. */
    bool MayLookBetter() const;
};

/** Plays a candidate beside the file it is to replace, as a viewer would show both.
 *
 *  Nothing may differ but colours: same screen, frames, delays, user input, loop, comments and aspect; in
 *  every displayed frame the same pixels covered; and no pixel off by more than the allowance explains. Both
 *  files are read back from the disk, so that whatever went wrong on the way is noticed here. Looks are
 *  measured as PvLookSeries does.
 *
 *  @param inOriginalPath   the file as it is
 *  @param inCandidatePath  the very file that would take its place; when it cannot be read, that is a reason
 *  @throws NvErrorCode     when the original cannot be opened any more; 2 */
PvComparison PvCompareGIFs(const char* inOriginalPath, const char* inCandidatePath,
                           const PvColourAllowance& inAllowance, PvProgress& ioProgress);
