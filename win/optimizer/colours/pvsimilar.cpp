#include "win/optimizer/colours/pvsimilar.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvlentstringtable.h"
#include "nvcode2/quant/nvquantremap.h"
#include "win/optimizer/codes/pvlzwestimate.h"
#include "win/optimizer/colours/pvframecolours.h"
#include "win/optimizer/look/pvbanding.h"
#include "win/optimizer/look/pvlookcost.h"

namespace {

// Euclidean distances in RGB below which colours may merge, the usual one first; 0, which keeps every colour,
// is for soft shading. Longer reaches than 6 save just as much as they cost in look.
constexpr std::array<std::uint32_t, 3> km_Reaches = {3, 6, 0};
constexpr std::uint32_t km_FramesTried = 3;

/** Colours that become one. */
struct Group {
    NvColor mLeader;
    std::uint64_t mRed = 0; // sums over its pixels
    std::uint64_t mGreen = 0;
    std::uint64_t mBlue = 0;
    std::uint64_t mPixels = 0;

    void Add(const NvColor& inColor, std::uint32_t inPixels) {
        mRed += std::uint64_t{inColor.red} * inPixels;
        mGreen += std::uint64_t{inColor.green} * inPixels;
        mBlue += std::uint64_t{inColor.blue} * inPixels;
        mPixels += inPixels;
    }

    NvColor Mean() const {
        const auto mean = [this](std::uint64_t inSum) {
            return static_cast<std::uint8_t>((inSum + mPixels / 2) / mPixels);
        };
        return {mean(mRed), mean(mGreen), mean(mBlue)};
    }
};

/** A frame's colours, merged. */
struct Merge {
    NvColorTable mTable;
    NvIndexMap mMap{};
};

/** The entries that a frame draws with, most used first. */
std::vector<std::uint32_t> UsedEntries(const PvHistogram& inHistogram) {
    std::vector<std::uint32_t> used(inHistogram.size());
    std::iota(used.begin(), used.end(), 0U);
    std::erase_if(used, [&](std::uint32_t inEntry) { return inHistogram[inEntry] == 0; });
    std::stable_sort(used.begin(), used.end(), [&](std::uint32_t inLeft, std::uint32_t inRight) {
        return inHistogram[inLeft] > inHistogram[inRight];
    });
    return used;
}

/** @return  nothing when no two colours are that near to each other */
std::optional<Merge> MergeColours(const PvFrameColours& inColours, std::uint32_t inReach) {
    if (inReach == 0)
        return std::nullopt;
    const std::vector<std::uint32_t> used = UsedEntries(inColours.mHistogram);
    std::vector<Group> groups;
    Merge merge;
    for (const std::uint32_t entry : used) {
        const NvColor& color = inColours.mTable.GetColor(entry);
        std::size_t nearest = groups.size();
        std::uint32_t nearestDistance = inReach * inReach;
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const int red = groups[i].mLeader.red - color.red; // few others are near in red alone
            if (static_cast<std::uint32_t>(red * red) >= nearestDistance)
                continue;
            const std::uint32_t distance = NvColorTable::ColorDistance(&groups[i].mLeader, &color);
            if (distance < nearestDistance) {
                nearest = i;
                nearestDistance = distance;
            }
        }
        if (nearest == groups.size())
            groups.push_back({color});
        groups[nearest].Add(color, inColours.mHistogram[entry]);
        merge.mMap[entry] = static_cast<std::uint8_t>(nearest);
    }
    if (groups.size() == used.size())
        return std::nullopt;
    merge.mTable = NvColorTable(static_cast<std::uint32_t>(groups.size()));
    for (std::uint32_t i = 0; i < groups.size(); ++i)
        merge.mTable.SetColor(i, groups[i].Mean());
    return merge;
}

/** Finds out on a few frames of an animation how far to reach. */
class ReachTrial {
public:
    ReachTrial(const std::vector<PvFrameColours>& inFrames,
               const std::vector<std::unique_ptr<NvGIFFrame>>& inTried)
        : mFrames(inFrames),
          mTried(inTried),
          mIndices(PvFramesToTry(static_cast<std::uint32_t>(inFrames.size()))) {}

    std::uint32_t ChooseReach() const {
        std::uint32_t best = km_Reaches.front();
        std::size_t bestCount = CountColours(best);
        std::optional<Cost> bestCost;
        for (const std::uint32_t reach : std::span(km_Reaches).subspan(1)) {
            const std::size_t count = CountColours(reach);
            if (count == bestCount)
                continue; // they merge the same
            if (!bestCost)
                bestCost = CostOf(best);
            if (reach == 0 && bestCost->mBanding == 0.0)
                break;
            const Cost cost = CostOf(reach);
            if (cost.mPrice < bestCost->mPrice) {
                best = reach;
                bestCount = count;
                bestCost = cost;
            }
        }
        return best;
    }

private:
    struct Cost {
        double mPrice = 0.0; // see PvLookCost
        double mBanding = 0.0;
    };

    /** Colours that are left of all frames tried. */
    std::size_t CountColours(std::uint32_t inReach) const {
        std::size_t count = 0;
        for (const std::uint32_t index : mIndices) {
            const std::optional<Merge> merge = MergeColours(mFrames[index], inReach);
            count += merge ? merge->mTable.GetSize() : UsedEntries(mFrames[index].mHistogram).size();
        }
        return count;
    }

    /** What the whole animation would cost if its other frames were like these. */
    Cost CostOf(std::uint32_t inReach) const {
        NvLentStringTable strings;
        PvLZWEstimator estimator(strings);
        double bits = 0.0;
        double similarity = 0.0;
        double banding = 0.0;
        for (std::size_t i = 0; i < mTried.size(); ++i) {
            NvIndexedImage merged = mTried[i]->GetImage().Copy();
            if (const std::optional<Merge> merge = MergeColours(mFrames[mIndices[i]], inReach))
                NvQuantRemap(merged, merge->mMap, merge->mTable);
            const bool isInterlaced = mTried[i]->GetInfo().mInterlaced != 0;
            bits += static_cast<double>(estimator.EstimateImage(merged, isInterlaced));
            similarity += PvFrameSimilarity(*mTried[i], merged);
            banding += PvBanding(*mTried[i], merged);
        }
        const auto count = static_cast<double>(mTried.size());
        banding /= count;
        return {
            PvLookCost(bits / 8 / count * static_cast<double>(mFrames.size()), similarity / count, banding),
            banding};
    }

    const std::vector<PvFrameColours>& mFrames;
    const std::vector<std::unique_ptr<NvGIFFrame>>& mTried;
    std::vector<std::uint32_t> mIndices;
};

} // namespace

std::vector<std::uint32_t> PvFramesToTry(std::uint32_t inFrameCount) {
    const std::uint32_t count = std::min(inFrameCount, km_FramesTried);
    std::vector<std::uint32_t> indices;
    for (std::uint32_t i = 0; i < count; ++i)
        indices.push_back(static_cast<std::uint32_t>(std::uint64_t{i} * inFrameCount / count));
    return indices;
}

double MergeSimilarFrameColours(std::vector<PvFrameColours>& ioFrames,
                                const std::vector<std::unique_ptr<NvGIFFrame>>& inTried) {
    const std::uint32_t reach = ReachTrial(ioFrames, inTried).ChooseReach();
    double worstError = 0.0;
    for (PvFrameColours& frame : ioFrames)
        if (const std::optional<Merge> merge = MergeColours(frame, reach))
            worstError = std::max(worstError, frame.Replace(merge->mMap, merge->mTable));
    return worstError;
}
