#include "win/pvpalette.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <tuple>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvassert.h"
#include "nvcode2/nvquantoctree.h"
#include "nvcode2/nvquantremap.h"
#include "nvcode2/nvquantselector.h"
#include "win/pvhistogram.h"
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

/** Maps a frame's indices into a new version of the shared table. */
void ApplySharedMap(NvAnimation& ioAnimation, const NvIndexMap& inMap, const NvColorTable& inTable) {
    for (NvGIFFrame& frame : ioAnimation)
        NvQuantRemap(frame.GetImage(), inMap, inTable);
    ioAnimation.GetGlobalInfo().mColorTable = inTable;
}

} // namespace

std::uint32_t PvPaletteLimit(PvPaletteMode inMode) {
    return LimitsOf(inMode).mShared;
}

double BuildGlobalPalette(NvAnimation& ioAnimation, PvPaletteMode inMode, PvProgress& ioProgress) {
    const ModeLimits limits = LimitsOf(inMode);
    const std::uint32_t count = ioAnimation.GetFrameCount();
    std::vector<PvHistogram> histograms;
    histograms.reserve(count);
    NvQuantOctree octree(limits.mShared);
    for (const NvGIFFrame& frame : ioAnimation) {
        histograms.push_back(PvDrawnHistogram(frame));
        octree.AddHistogram(frame.GetImage().GetColorTable(), histograms.back().data());
    }
    NvColorTable table = octree.MakeTable();
    if (table.GetSize() == 0)
        table = OneBlackEntry();

    double worstError = 0.0;
    for (std::uint32_t i = 0; i < count; ++i) {
        ioProgress.ReportFrame(i, count);
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        const NvColorTable& colors = frame.GetImage().GetColorTable();
        const std::uint32_t* histogram = histograms[i].data();
        const bool selects = inMode != PvPaletteMode::km_Full;
        NvColorFlags flags{};
        if (selects)
            flags = NvQuantSelector(colors, histogram, table, limits.mPerFrame);
        const NvIndexMap map = NvMakeRemap(colors, histogram, table, selects ? &flags : nullptr);
        worstError = std::max(worstError, NvMeanRemapError(colors, histogram, map, table));
        NvQuantRemap(frame.GetImage(), map, table);
        frame.GetInfo().mHasLocalTable = 0;
        frame.GetInfo().mColorTable.Clear();
    }
    ioAnimation.GetGlobalInfo().mHasGlobalTable = 1;
    ioAnimation.GetGlobalInfo().mSortFlag = 0;
    ioAnimation.GetGlobalInfo().mColorTable = table;
    return worstError;
}

void MergeDuplicateColours(NvAnimation& ioAnimation) {
    const NvGIFGlobalInfo& info = ioAnimation.GetGlobalInfo();
    if (!info.mHasGlobalTable || info.mColorTable.GetSize() < 2)
        return;
    NvIndexMap map{};
    const NvColorTable merged = info.mColorTable.RemoveDuplicatesWithMap(map.data());
    if (merged.GetSize() < info.mColorTable.GetSize())
        ApplySharedMap(ioAnimation, map, merged);
}

void OrderSharedTable(NvAnimation& ioAnimation, std::uint32_t inTableLimit) {
    const NvColorTable& table = ioAnimation.GetGlobalInfo().mColorTable;
    std::array<std::uint32_t, 256> frames{}; // that draw with the colour
    std::array<std::uint64_t, 256> pixels{}; // drawn in the colour
    for (const NvGIFFrame& frame : ioAnimation) {
        NvAssert(!frame.GetInfo().mHasLocalTable);
        const PvHistogram histogram = PvDrawnHistogram(frame);
        for (std::uint32_t i = 0; i < frame.GetImage().GetColorTable().GetSize(); ++i) {
            frames[i] += histogram[i] != 0 ? 1 : 0;
            pixels[i] += histogram[i];
        }
    }

    std::vector<std::uint32_t> order(table.GetSize());
    std::iota(order.begin(), order.end(), 0U);
    std::erase_if(order, [&](std::uint32_t inIndex) { return frames[inIndex] == 0; });
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t inLeft, std::uint32_t inRight) {
        return std::tie(frames[inLeft], pixels[inLeft]) > std::tie(frames[inRight], pixels[inRight]);
    });

    NvColorTable ordered(static_cast<std::uint32_t>(std::max<std::size_t>(order.size(), 1)));
    NvIndexMap map{};
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        ordered.SetColor(i, table.GetColor(order[i]));
        map[order[i]] = static_cast<std::uint8_t>(i);
    }
    ApplySharedMap(ioAnimation, map, ordered);
    for (NvGIFFrame& frame : ioAnimation)
        frame.UpdateTransparency(ioAnimation.GetSharedTableOf(frame), inTableLimit);
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
