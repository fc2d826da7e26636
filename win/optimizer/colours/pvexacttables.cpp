#include "win/optimizer/colours/pvexacttables.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/quant/nvquantremap.h"
#include "win/optimizer/codes/pvlzwparser.h"

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

std::size_t CountMissing(const ColourSet& inColours, const ColourSet& inShared) {
    return static_cast<std::size_t>(
        std::count_if(inColours.begin(), inColours.end(), [&](std::uint32_t inColour) {
            return !std::binary_search(inShared.begin(), inShared.end(), inColour);
        }));
}

std::uint32_t PixelBits(std::size_t inEntries) {
    return std::max(
        NvColorTable::GetBitsNeeded(static_cast<std::uint32_t>(std::min<std::size_t>(inEntries, 256))), 2U);
}

/** What a frame saves with a shared table instead of one of its own: that table's bytes, less what the wider
 *  codes take.
 *  @param inSharedBits  of the shared table's pixels */
double SavedBySharing(const NvPackedFrame& inFrame, const ColourSet& inColours, std::uint32_t inSharedBits) {
    const std::uint32_t bits = PixelBits(inColours.size() + (inFrame.IsFullyDrawn() ? 0 : 1));
    const std::uint64_t misses = std::max<std::uint64_t>(inFrame.GetCodeCount(), 1) - 1;
    const double wider = static_cast<double>(PvLZWBits(std::max(inSharedBits, bits), misses)) -
                         static_cast<double>(PvLZWBits(bits, misses));
    return 3.0 * (1U << bits) - wider / 8;
}

/** What all frames that a shared table serves save together, where that is more than nothing. */
double SavedByTable(const std::vector<ColourSet>& inFrames, const std::vector<double>& inSaved,
                    const ColourSet& inShared) {
    double saved = 0.0;
    for (std::size_t i = 0; i < inFrames.size(); ++i)
        if (inSaved[i] > 0.0 && CountMissing(inFrames[i], inShared) == 0)
            saved += inSaved[i];
    return saved;
}

/** Gathers colours for a shared table: over and over those of the frame that saves most for each colour that
 * is still missing, as long as they fit. One entry stays free for undrawn pixels. */
ColourSet GatherShared(const std::vector<ColourSet>& inFrames, const std::vector<double>& inSaved) {
    ColourSet shared;
    while (true) {
        std::size_t best = inFrames.size();
        double bestRate = 0.0;
        for (std::size_t i = 0; i < inFrames.size(); ++i) {
            const std::size_t missing = inSaved[i] > 0.0 ? CountMissing(inFrames[i], shared) : 0;
            if (missing == 0 || shared.size() + missing >= km_TableLimit)
                continue;
            const double rate = inSaved[i] / static_cast<double>(missing);
            if (rate > bestRate) {
                best = i;
                bestRate = rate;
            }
        }
        if (best == inFrames.size())
            return shared;
        shared.insert(shared.end(), inFrames[best].begin(), inFrames[best].end());
        SortOut(shared);
    }
}

/** Replaces the file's shared table by a better one, if there is one.
 *  @return  what each frame saves that draws with it */
std::vector<double> ChooseShared(const NvAnimation& inAnimation, const std::vector<ColourSet>& inFrames,
                                 NvColorTable& ioShared) {
    const auto savedWith = [&](std::size_t inEntries) {
        std::vector<double> saved;
        for (std::uint32_t i = 0; i < inAnimation.GetFrameCount(); ++i)
            saved.push_back(SavedBySharing(inAnimation.GetPackedFrame(i), inFrames[i], PixelBits(inEntries)));
        return saved;
    };
    const ColourSet present = ColoursOf(ioShared);
    std::vector<double> saved = savedWith(present.size() + 1);
    std::vector<double> savedWithFull = savedWith(km_TableLimit);
    const ColourSet gathered = GatherShared(inFrames, savedWithFull);
    if (SavedByTable(inFrames, savedWithFull, gathered) <= SavedByTable(inFrames, saved, present))
        return saved;
    ioShared = MakeTable(gathered);
    return savedWithFull;
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
    std::vector<double> saved(count, 0.0);
    if (!shareAll)
        saved = ChooseShared(inAnimation, frameColours, plan.mShared);
    const ColourSet shared = ColoursOf(plan.mShared);
    for (std::uint32_t i = 0; i < count; ++i) {
        const ColourSet& colours = frameColours[i];
        const bool fits = std::includes(shared.begin(), shared.end(), colours.begin(), colours.end());
        // A full shared table has an entry for a frame's transparent pixels only if the frame leaves one
        // unused.
        const bool hasSpare = !needsSpare || shared.size() < km_TableLimit || colours.size() < km_TableLimit;
        std::optional<NvColorTable> own;
        if (plan.mShared.GetSize() == 0 || !fits || !hasSpare || saved[i] < 0.0)
            own = MakeTable(colours);
        const NvPackedFrame& packed = inAnimation.GetPackedFrame(i);
        const NvIndexMap map = NvMakeRemap(packed.GetColorTable(), packed.GetHistogram().data(),
                                           own ? *own : plan.mShared, nullptr);
        plan.AddFrame(packed, map, std::move(own));
    }
    plan.OrderSharedTable();
    plan.ReserveSpareEntry(inAnimation);
    return plan;
}
