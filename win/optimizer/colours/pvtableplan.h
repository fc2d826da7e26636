#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/quant/nvquantremap.h"

class NvAnimation;
class NvGIFFrame;
class NvPackedFrame;

/** Which colour tables an animation's frames are to be written with. It is settled for all of them before the
 *  first one is written, since the shared table stands in front of it. */
struct PvTablePlan {
    struct Frame {
        NvIndexMap mMap{};                ///< the entry for every index the frame draws with
        std::optional<NvColorTable> mOwn; ///< its own table; none: the shared one
    };

    /** Orders the shared table by how many frames draw with a colour, most first, and drops colours that none
     *  uses.
     *
     *  A frame's code width follows from its highest index, so small frames that share the common colours get
     *  narrow codes. No frame may have a table of its own. */
    void OrderSharedTable(const NvAnimation& inAnimation);

    /** Gives the shared table one more entry where a frame has none to spare for its undrawn pixels and the
     *  limit allows it. */
    void ReserveSpareEntry(const NvAnimation& inAnimation);

    /** A frame of the animation, unpacked, with its table whole and its transparency fields up to date. */
    std::unique_ptr<NvGIFFrame> MakeFrame(const NvAnimation& inAnimation, std::uint32_t inIndex);

    NvColorTable mShared;
    std::uint32_t mSharedLimit = 256; ///< entries it may have at most, 2 to 256
    std::vector<Frame> mFrames;       ///< in the animation's order
};

/** Plans one table for all frames, ordered.
 *  @param inTable  the table that the frames' indices are of */
PvTablePlan PvPlanSharedTable(const NvAnimation& inAnimation, const NvColorTable& inTable,
                              std::uint32_t inLimit);

/** Plans tables that change no displayed colour.
 *
 *  Colours that no drawn pixel uses, and repeated ones, are dropped. When all frames' colours fit one table
 *  they share it, ordered; otherwise the file's global table stays, and each frame with colours of its own
 *  gets a local table of just those. */
PvTablePlan PvPlanExactTables(const NvAnimation& inAnimation);
