#include "win/optimizer/colours/pvtableplan.h"

#include <algorithm>
#include <array>
#include <compare>
#include <numeric>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/gif/nvanimation.h"
#include "win/optimizer/colours/pvhistogram.h"

namespace {

/** How much the entries of a shared table are drawn with. */
struct EntryUse {
    std::uint32_t mFrames = 0;
    std::uint64_t mPixels = 0;

    auto operator<=>(const EntryUse&) const = default;
};

/** The entries in use, most used first. */
std::vector<std::uint32_t> MostUsedFirst(const NvAnimation& inAnimation,
                                         const std::vector<PvTablePlan::Frame>& inPlans) {
    std::array<EntryUse, 256> uses{};
    for (std::uint32_t i = 0; i < inAnimation.GetFrameCount(); ++i) {
        const PvHistogram histogram =
            PvMapHistogram(inAnimation.GetPackedFrame(i).GetHistogram(), inPlans[i].mMap);
        for (std::uint32_t entry = 0; entry < uses.size(); ++entry) {
            uses[entry].mFrames += histogram[entry] != 0 ? 1 : 0;
            uses[entry].mPixels += histogram[entry];
        }
    }
    std::vector<std::uint32_t> order(uses.size());
    std::iota(order.begin(), order.end(), 0U);
    std::erase_if(order, [&](std::uint32_t inEntry) { return uses[inEntry].mFrames == 0; });
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t inLeft, std::uint32_t inRight) {
        return uses[inLeft] > uses[inRight];
    });
    return order;
}

/** The lowest index that a frame does not draw with; 256 when there is none. */
std::uint32_t LowestUnused(const PvHistogram& inHistogram) {
    return static_cast<std::uint32_t>(std::find(inHistogram.begin(), inHistogram.end(), 0U) -
                                      inHistogram.begin());
}

} // namespace

void PvTablePlan::OrderSharedTable(const NvAnimation& inAnimation) {
    const std::vector<std::uint32_t> order = MostUsedFirst(inAnimation, mFrames);
    NvColorTable ordered(static_cast<std::uint32_t>(std::max<std::size_t>(order.size(), 1)));
    NvIndexMap newIndices{};
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        ordered.SetColor(i, mShared.GetColor(order[i]));
        newIndices[order[i]] = static_cast<std::uint8_t>(i);
    }
    mShared = ordered;
    for (Frame& frame : mFrames) {
        NvAssert(!frame.mOwn);
        for (std::uint8_t& entry : frame.mMap)
            entry = newIndices[entry];
    }
}

void PvTablePlan::ReserveSpareEntry(const NvAnimation& inAnimation) {
    const std::uint32_t size = mShared.GetSize();
    if (size >= mSharedLimit)
        return;
    for (std::uint32_t i = 0; i < inAnimation.GetFrameCount(); ++i) {
        const NvPackedFrame& frame = inAnimation.GetPackedFrame(i);
        if (mFrames[i].mOwn || frame.IsFullyDrawn() ||
            LowestUnused(PvMapHistogram(frame.GetHistogram(), mFrames[i].mMap)) < size)
            continue;
        mShared.SetSize(size + 1);
        mShared.SetColor(size, NvColor{});
        return;
    }
}

std::unique_ptr<NvGIFFrame> PvTablePlan::MakeFrame(const NvAnimation& inAnimation, std::uint32_t inIndex) {
    const NvPackedFrame& packed = inAnimation.GetPackedFrame(inIndex);
    const Frame& plan = mFrames[inIndex];
    const NvColorTable& table = plan.mOwn ? *plan.mOwn : mShared;
    const PvHistogram histogram = PvMapHistogram(packed.GetHistogram(), plan.mMap);
    const std::uint32_t free = LowestUnused(histogram);
    std::unique_ptr<NvGIFFrame> frame = packed.Unpack(plan.mMap, table, static_cast<std::uint8_t>(free));
    NvGIFFrameInfo& info = frame->GetInfo();
    info.mHasLocalTable = plan.mOwn ? 1 : 0;
    info.mColorTable.Clear();
    if (plan.mOwn)
        info.mColorTable = table;
    info.mHasTransparency = !packed.IsFullyDrawn() && free < table.GetSize() ? 1 : 0;
    info.mTransparentIndex = info.mHasTransparency ? static_cast<std::uint8_t>(free) : 0;
    if (!packed.IsFullyDrawn() && !info.mHasTransparency)
        frame->UpdateTransparency(plan.mOwn ? nullptr : &mShared, mSharedLimit, histogram);
    return frame;
}

PvTablePlan PvPlanSharedTable(const NvAnimation& inAnimation, const NvColorTable& inTable,
                              std::uint32_t inLimit) {
    PvTablePlan plan;
    plan.mShared = inTable;
    plan.mSharedLimit = inLimit;
    plan.mFrames.resize(inAnimation.GetFrameCount());
    for (PvTablePlan::Frame& frame : plan.mFrames)
        std::iota(frame.mMap.begin(), frame.mMap.end(), std::uint8_t{0});
    plan.OrderSharedTable(inAnimation);
    plan.ReserveSpareEntry(inAnimation);
    return plan;
}
