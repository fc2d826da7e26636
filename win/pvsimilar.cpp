#include "win/pvsimilar.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvquantremap.h"
#include "win/pvhistogram.h"
#include "win/pvlookcost.h"
#include "win/pvlzwestimate.h"

namespace {

// Euclidean distances in RGB below which colours merge. Longer reaches than 6 save as much as they cost in
// look; soft gradients fall into bands.
constexpr std::uint32_t km_ShortReach = 3;
constexpr std::uint32_t km_LongReach = 6;
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
    double mMeanError = 0.0; // levels per channel, over the drawn pixels
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
std::optional<Merge> MergeColours(const NvGIFFrame& inFrame, std::uint32_t inReach) {
    const NvColorTable& table = inFrame.GetImage().GetColorTable();
    const PvHistogram histogram = PvDrawnHistogram(inFrame);
    const std::vector<std::uint32_t> used = UsedEntries(histogram);
    std::vector<Group> groups;
    Merge merge;
    for (const std::uint32_t entry : used) {
        const NvColor& color = table.GetColor(entry);
        std::size_t nearest = groups.size();
        std::uint32_t nearestDistance = inReach * inReach;
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const std::uint32_t distance = NvColorTable::ColorDistance(&groups[i].mLeader, &color);
            if (distance < nearestDistance) {
                nearest = i;
                nearestDistance = distance;
            }
        }
        if (nearest == groups.size())
            groups.push_back({color});
        groups[nearest].Add(color, histogram[entry]);
        merge.mMap[entry] = static_cast<std::uint8_t>(nearest);
    }
    if (groups.size() == used.size())
        return std::nullopt;
    merge.mTable = NvColorTable(static_cast<std::uint32_t>(groups.size()));
    for (std::uint32_t i = 0; i < groups.size(); ++i)
        merge.mTable.SetColor(i, groups[i].Mean());
    merge.mMeanError = NvMeanRemapError(table, histogram.data(), merge.mMap, merge.mTable);
    return merge;
}

/** Frames spread evenly over an animation. */
std::vector<const NvGIFFrame*> FramesToTry(const NvAnimation& inAnimation) {
    const std::uint32_t count = std::min(inAnimation.GetFrameCount(), km_FramesTried);
    std::vector<const NvGIFFrame*> frames;
    for (std::uint32_t i = 0; i < count; ++i)
        frames.push_back(&inAnimation.GetFrame(
            static_cast<std::uint32_t>(std::uint64_t{i} * inAnimation.GetFrameCount() / count)));
    return frames;
}

/** What the whole animation would cost if its other frames were like these. */
double CostOf(const NvAnimation& inAnimation, std::uint32_t inReach) {
    PvLZWEstimator estimator;
    double bits = 0.0;
    double similarity = 0.0;
    const std::vector<const NvGIFFrame*> frames = FramesToTry(inAnimation);
    for (const NvGIFFrame* frame : frames) {
        const std::unique_ptr<NvImage> copy = frame->Clone();
        auto& merged = static_cast<NvGIFFrame&>(*copy);
        if (const std::optional<Merge> merge = MergeColours(*frame, inReach))
            NvQuantRemap(merged.GetImage(), merge->mMap, merge->mTable);
        bits += static_cast<double>(estimator.EstimateFrame(merged));
        similarity += PvFrameSimilarity(*frame, merged);
    }
    const auto count = static_cast<double>(frames.size());
    return PvLookCost(bits / 8 / count * inAnimation.GetFrameCount(), similarity / count);
}

/** Whether the long reach merges more than the short one, in the frames tried. */
bool LongReachMergesMore(const NvAnimation& inAnimation) {
    const std::vector<const NvGIFFrame*> frames = FramesToTry(inAnimation);
    return std::any_of(frames.begin(), frames.end(), [&](const NvGIFFrame* inFrame) {
        const std::optional<Merge> further = MergeColours(*inFrame, km_LongReach);
        const std::optional<Merge> nearer = MergeColours(*inFrame, km_ShortReach);
        return further && (!nearer || further->mTable.GetSize() < nearer->mTable.GetSize());
    });
}

std::uint32_t ChooseReach(const NvAnimation& inAnimation) {
    if (!LongReachMergesMore(inAnimation))
        return km_ShortReach;
    return CostOf(inAnimation, km_LongReach) < CostOf(inAnimation, km_ShortReach) ? km_LongReach
                                                                                  : km_ShortReach;
}

} // namespace

double MergeSimilarFrameColours(NvAnimation& ioAnimation) {
    const std::uint32_t reach = ChooseReach(ioAnimation);
    double worstError = 0.0;
    for (NvGIFFrame& frame : ioAnimation) {
        const std::optional<Merge> merge = MergeColours(frame, reach);
        if (!merge)
            continue;
        NvQuantRemap(frame.GetImage(), merge->mMap, merge->mTable);
        worstError = std::max(worstError, merge->mMeanError);
    }
    return worstError;
}
