#include "win/optimizer/colours/pvexacttables.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/quant/nvquantremap.h"

namespace {

/** Distinct colours, packed, in rising order. */
using ColourSet = std::vector<std::uint32_t>;

constexpr std::uint32_t km_TableLimit = 256;

void SortOut(ColourSet& ioColours) {
    std::sort(ioColours.begin(), ioColours.end());
    ioColours.erase(std::unique(ioColours.begin(), ioColours.end()), ioColours.end());
}

/** The colours a frame draws with. */
ColourSet DrawnColours(const NvPackedFrame& inFrame) {
    ColourSet colours;
    for (std::uint32_t i = 0; i < inFrame.GetColorTable().GetSize(); ++i)
        if (inFrame.GetHistogram()[i] != 0)
            colours.push_back(NvPackColor(inFrame.GetColorTable().GetColor(i)));
    SortOut(colours);
    return colours;
}

ColourSet ColoursOf(const NvColorTable& inTable) {
    ColourSet colours;
    for (std::uint32_t i = 0; i < inTable.GetSize(); ++i)
        colours.push_back(NvPackColor(inTable.GetColor(i)));
    SortOut(colours);
    return colours;
}

/** A table of these colours; of one black entry when there are none. */
NvColorTable MakeTable(const ColourSet& inColours) {
    NvColorTable table(static_cast<std::uint32_t>(std::max<std::size_t>(inColours.size(), 1)));
    std::uint32_t next = 0;
    for (const std::uint32_t colour : inColours)
        table.SetColor(next++, NvUnpackColor(colour));
    return table;
}

/** The colours of all frames; it stops when one table cannot hold them. */
ColourSet CollectColours(const std::vector<ColourSet>& inFrames) {
    ColourSet all;
    for (const ColourSet& colours : inFrames) {
        if (all.size() > km_TableLimit)
            break;
        all.insert(all.end(), colours.begin(), colours.end());
        SortOut(all);
    }
    return all;
}

} // namespace

PvTablePlan PvPlanExactTables(const NvAnimation& inAnimation) {
    const std::uint32_t count = inAnimation.GetFrameCount();
    // An animation needs one entry to spare for pixels that the screen shows already, a still only if it has
    // undrawn ones.
    const bool needsSpare = count > 1 || !inAnimation.GetPackedFrame(0).IsFullyDrawn();
    std::vector<ColourSet> frameColours;
    for (std::uint32_t i = 0; i < count; ++i)
        frameColours.push_back(DrawnColours(inAnimation.GetPackedFrame(i)));
    const ColourSet allColours = CollectColours(frameColours);
    const bool shareAll = allColours.size() + (needsSpare ? 1 : 0) <= km_TableLimit;

    PvTablePlan plan;
    plan.mShared = shareAll ? MakeTable(allColours) : inAnimation.GetGlobalInfo().mColorTable;
    const ColourSet shared = ColoursOf(plan.mShared);
    for (std::uint32_t i = 0; i < count; ++i) {
        const ColourSet& colours = frameColours[i];
        const bool fits = std::includes(shared.begin(), shared.end(), colours.begin(), colours.end());
        // A full shared table has an entry for a frame's transparent pixels only if the frame leaves one
        // unused.
        const bool hasSpare = !needsSpare || shared.size() < km_TableLimit || colours.size() < km_TableLimit;
        std::optional<NvColorTable> own;
        if (plan.mShared.GetSize() == 0 || !fits || !hasSpare)
            own = MakeTable(colours);
        const NvPackedFrame& packed = inAnimation.GetPackedFrame(i);
        const NvIndexMap map = NvMakeRemap(packed.GetColorTable(), packed.GetHistogram().data(),
                                           own ? *own : plan.mShared, nullptr);
        plan.AddFrame(packed, map, std::move(own));
    }
    if (shareAll)
        plan.OrderSharedTable();
    plan.ReserveSpareEntry(inAnimation);
    return plan;
}
