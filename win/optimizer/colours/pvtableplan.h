#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/quant/nvquantremap.h"
#include "win/optimizer/colours/pvframecolours.h"

class NvAnimation;
class NvPackedFrame;

/** Which colour tables an animation's frames are to be written with. That is settled for all of them before
 *  the first is written, since the shared table stands in front of it. */
struct PvTablePlan {
    struct Frame {
        NvIndexMap mMap{};                ///< the entry for every index the frame draws with
        std::optional<NvColorTable> mOwn; ///< its own table; none: the shared one
        PvHistogram mUses{};              ///< drawn pixels of each entry
    };

    /** Adds the plan of the next frame.
     *  @param inMap  becomes mMap
     *  @param inOwn  becomes mOwn */
    void AddFrame(const NvPackedFrame& inFrame, const NvIndexMap& inMap, std::optional<NvColorTable> inOwn);

    /** Orders the shared table by how many frames draw with a colour, most first, and drops colours that none
     *  uses.
     *
     *  A frame's code width follows from its highest index, so small frames that draw with the common colours
     *  get narrow codes. Frames with tables of their own do not count. */
    void OrderSharedTable();

    /** Gives the shared table one more entry where a frame has none to spare for its undrawn pixels and the
     *  limit allows it. */
    void ReserveSpareEntry(const NvAnimation& inAnimation);

    /** A frame of the animation, unpacked, with its table whole and its transparency fields up to date. */
    std::unique_ptr<NvGIFFrame> MakeFrame(const NvAnimation& inAnimation, std::uint32_t inIndex);

    /** LZW codes that such a frame takes; 0 when they would have to be counted. */
    std::uint64_t GetKnownCodes(const NvAnimation& inAnimation, std::uint32_t inIndex) const;

    NvColorTable mShared;
    std::uint32_t mSharedLimit = 256; ///< entries it may have at most, 2 to 256
    std::vector<Frame> mFrames;       ///< in the animation's order
};

/** Plans one table for all frames, ordered.
 *  @param inTable  the table that the frames' indices are of */
PvTablePlan PvPlanSharedTable(const NvAnimation& inAnimation, const NvColorTable& inTable,
                              std::uint32_t inLimit);
