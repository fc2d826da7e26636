#include "win/pvlossless.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvquantoctree.h"
#include "nvcode2/nvquantremap.h"
#include "win/pvhistogram.h"
#include "win/pvprogress.h"

namespace {

/** Distinct colours, packed, in rising order. */
using ColourSet = std::vector<std::uint32_t>;

void SortOut(ColourSet& ioColours) {
    std::sort(ioColours.begin(), ioColours.end());
    ioColours.erase(std::unique(ioColours.begin(), ioColours.end()), ioColours.end());
}

/** What a frame draws with. */
ColourSet DrawnColours(const NvGIFFrame& inFrame) {
    const PvHistogram histogram = PvDrawnHistogram(inFrame);
    ColourSet colours;
    for (std::uint32_t i = 0; i < inFrame.GetImage().GetColorTable().GetSize(); ++i)
        if (histogram[i] != 0)
            colours.push_back(NvPackColor(inFrame.GetImage().GetColorTable().GetColor(i)));
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

NvColor Unpack(std::uint32_t inColour) {
    return {static_cast<std::uint8_t>(inColour), static_cast<std::uint8_t>(inColour >> 8),
            static_cast<std::uint8_t>(inColour >> 16)};
}

/** A table of these colours; of one black entry when there are none. */
NvColorTable MakeTable(const ColourSet& inColours) {
    NvColorTable table(static_cast<std::uint32_t>(std::max<std::size_t>(inColours.size(), 1)));
    std::uint32_t next = 0;
    for (const std::uint32_t colour : inColours)
        table.SetColor(next++, Unpack(colour));
    return table;
}

/** Gives a frame a table that holds all its colours. */
void MapTo(NvGIFFrame& ioFrame, const NvColorTable& inTable) {
    const PvHistogram histogram = PvDrawnHistogram(ioFrame);
    const NvIndexMap map =
        NvMakeRemap(ioFrame.GetImage().GetColorTable(), histogram.data(), inTable, nullptr);
    NvQuantRemap(ioFrame.GetImage(), map, inTable);
}

void UseSharedTable(NvGIFFrame& ioFrame, const NvColorTable& inShared) {
    MapTo(ioFrame, inShared);
    ioFrame.GetInfo().mHasLocalTable = 0;
    ioFrame.GetInfo().mColorTable.Clear();
}

void UseOwnTable(NvGIFFrame& ioFrame, const ColourSet& inColours) {
    const NvColorTable table = MakeTable(inColours);
    MapTo(ioFrame, table);
    ioFrame.GetInfo().mHasLocalTable = 1;
    ioFrame.GetInfo().mColorTable = table;
}

} // namespace

bool ShareExactColours(NvAnimation& ioAnimation, PvProgress& ioProgress) {
    constexpr std::uint32_t km_TableLimit = 256;
    const std::uint32_t count = ioAnimation.GetFrameCount();
    // An animation needs one entry to spare for pixels that the screen shows already, a still only if it has
    // undrawn ones.
    const bool needsSpare = count > 1 || ioAnimation.GetFrame(0).HasTransparency();
    std::vector<ColourSet> frameColours;
    ColourSet allColours;
    for (std::uint32_t i = 0; i < count; ++i) {
        ioProgress.ReportFrame(i, count);
        frameColours.push_back(DrawnColours(ioAnimation.GetFrame(i)));
        if (allColours.size() > km_TableLimit)
            continue;
        allColours.insert(allColours.end(), frameColours.back().begin(), frameColours.back().end());
        SortOut(allColours);
    }

    NvGIFGlobalInfo& global = ioAnimation.GetGlobalInfo();
    const bool shareAll = allColours.size() + (needsSpare ? 1 : 0) <= km_TableLimit;
    if (shareAll) {
        global.mHasGlobalTable = 1;
        global.mSortFlag = 0;
        global.mColorTable = MakeTable(allColours);
    }
    const ColourSet shared = ColoursOf(global.mColorTable);
    const bool hasShared = global.mHasGlobalTable != 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        const ColourSet& colours = frameColours[i];
        const bool fits =
            hasShared && std::includes(shared.begin(), shared.end(), colours.begin(), colours.end());
        // A full shared table has no entry to spare for a frame's transparent pixels unless the frame leaves
        // one unused.
        const bool hasSpare = !needsSpare || shared.size() < km_TableLimit || colours.size() < km_TableLimit;
        if (fits && hasSpare)
            UseSharedTable(frame, global.mColorTable);
        else
            UseOwnTable(frame, colours);
        frame.UpdateTransparency(ioAnimation.GetSharedTableOf(frame), km_TableLimit);
    }
    return shareAll;
}
