#include "win/pvpalette.h"

#include <algorithm>
#include <array>
#include <compare>
#include <numeric>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvassert.h"
#include "nvcode2/nvquantoctree.h"
#include "nvcode2/nvquantselector.h"
#include "win/pvframecolours.h"
#include "win/pvprogress.h"

namespace {

struct ModeLimits {
    std::uint32_t mShared;
    std::uint32_t mPerFrame;
};

ModeLimits LimitsOf(PvPaletteMode inMode) {
    switch (inMode) {
    case PvPaletteMode::km_Full:
        return {256, 256};
    case PvPaletteMode::km_Normal:
        return {128, 120};
    case PvPaletteMode::km_Strong:
        break;
    }
    return {64, 60};
}

NvColorTable OneBlackEntry() {
    return NvColorTable(1);
}

/** How much the entries of a shared table are drawn with. */
struct EntryUse {
    std::uint32_t mFrames = 0;
    std::uint64_t mPixels = 0;

    auto operator<=>(const EntryUse&) const = default;
};

/** The entries in use, most used first. */
std::vector<std::uint32_t> MostUsedFirst(const std::vector<PvHistogram>& inHistograms) {
    std::array<EntryUse, 256> uses{};
    for (const PvHistogram& histogram : inHistograms)
        for (std::uint32_t i = 0; i < uses.size(); ++i) {
            uses[i].mFrames += histogram[i] != 0 ? 1 : 0;
            uses[i].mPixels += histogram[i];
        }
    std::vector<std::uint32_t> order(uses.size());
    std::iota(order.begin(), order.end(), 0U);
    std::erase_if(order, [&](std::uint32_t inEntry) { return uses[inEntry].mFrames == 0; });
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t inLeft, std::uint32_t inRight) {
        return uses[inLeft] > uses[inRight];
    });
    return order;
}

NvIndexMap SameIndices() {
    NvIndexMap map;
    std::iota(map.begin(), map.end(), std::uint8_t{0});
    return map;
}

} // namespace

std::uint32_t PvPaletteLimit(PvPaletteMode inMode) {
    return LimitsOf(inMode).mShared;
}

PvSharedPalette BuildGlobalPalette(std::vector<PvFrameColours>& ioFrames, PvPaletteMode inMode,
                                   PvProgress& ioProgress) {
    const ModeLimits limits = LimitsOf(inMode);
    NvQuantOctree octree(limits.mShared);
    for (const PvFrameColours& frame : ioFrames)
        octree.AddHistogram(frame.mTable, frame.mHistogram.data());
    PvSharedPalette palette{octree.MakeTable()};
    if (palette.mTable.GetSize() == 0)
        palette.mTable = OneBlackEntry();

    const auto count = static_cast<std::uint32_t>(ioFrames.size());
    for (std::uint32_t i = 0; i < count; ++i) {
        ioProgress.ReportFrame(i, count);
        PvFrameColours& frame = ioFrames[i];
        const std::uint32_t* histogram = frame.mHistogram.data();
        const bool selects = inMode != PvPaletteMode::km_Full;
        NvColorFlags flags{};
        if (selects)
            flags = NvQuantSelector(frame.mTable, histogram, palette.mTable, limits.mPerFrame);
        const NvIndexMap map =
            NvMakeRemap(frame.mTable, histogram, palette.mTable, selects ? &flags : nullptr);
        palette.mWorstError = std::max(palette.mWorstError, frame.Replace(map, palette.mTable));
    }
    return palette;
}

void MergeDuplicateColours(std::vector<PvFrameColours>& ioFrames, NvColorTable& ioTable) {
    if (ioTable.GetSize() < 2)
        return;
    NvIndexMap map{};
    const NvColorTable merged = ioTable.RemoveDuplicatesWithMap(map.data());
    if (merged.GetSize() == ioTable.GetSize())
        return;
    for (PvFrameColours& frame : ioFrames)
        frame.Replace(map, merged);
    ioTable = merged;
}

void OrderSharedTable(NvAnimation& ioAnimation, std::uint32_t inTableLimit,
                      const std::vector<NvIndexMap>& inMaps) {
    std::vector<PvHistogram> histograms; // by entry of the shared table
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        NvAssert(!ioAnimation.GetFrame(i).GetInfo().mHasLocalTable);
        const PvHistogram histogram = PvDrawnHistogram(ioAnimation.GetFrame(i));
        histograms.push_back(inMaps.empty() ? histogram : PvMapHistogram(histogram, inMaps[i]));
    }

    NvColorTable& table = ioAnimation.GetGlobalInfo().mColorTable;
    const std::vector<std::uint32_t> order = MostUsedFirst(histograms);
    NvColorTable ordered(static_cast<std::uint32_t>(std::max<std::size_t>(order.size(), 1)));
    NvIndexMap newIndices{};
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        ordered.SetColor(i, table.GetColor(order[i]));
        newIndices[order[i]] = static_cast<std::uint8_t>(i);
    }
    table = ordered;
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        NvIndexMap map = inMaps.empty() ? SameIndices() : inMaps[i];
        for (std::uint8_t& entry : map)
            entry = newIndices[entry];
        NvQuantRemap(frame.GetImage(), map, ordered);
        frame.GetInfo().mHasTransparency = 0; // its index is of the table that was
        frame.UpdateTransparency(&table, inTableLimit, PvMapHistogram(histograms[i], newIndices));
    }
}

void NarrowTables(NvAnimation& ioAnimation) {
    for (NvGIFFrame& frame : ioAnimation)
        frame.GetImage().GetColorTable().SetSize(frame.GetImage().GetHighestIndex() + 1U);
}

void RestoreBackgroundIndex(NvAnimation& ioAnimation, const NvColor& inBackground) {
    NvGIFGlobalInfo& info = ioAnimation.GetGlobalInfo();
    if (!info.mHasGlobalTable) {
        info.mColorTable = NvColorTable(2);
        info.mColorTable.SetColor(0, inBackground);
        info.mColorTable.SetColor(1, inBackground);
        info.mHasGlobalTable = 1;
        info.mBackgroundIndex = 0;
        return;
    }
    info.mBackgroundIndex = 0;
    if (info.mColorTable.GetSize() > 0)
        info.mBackgroundIndex =
            static_cast<std::uint8_t>(info.mColorTable.FindClosestColor(NvPackColor(inBackground), -1));
}
