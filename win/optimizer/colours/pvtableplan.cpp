#include "win/optimizer/colours/pvtableplan.h"

#include <algorithm>
#include <array>
#include <compare>
#include <numeric>
#include <utility>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/gif/nvanimation.h"

namespace {

/** How much is drawn with an entry of the shared table. */
struct EntryUse {
    std::uint32_t mFrames = 0;
    std::uint64_t mPixels = 0;

    auto operator<=>(const EntryUse&) const = default;
};

/** The entries in use, most used first. */
std::vector<std::uint32_t> MostUsedFirst(const std::vector<PvTablePlan::Frame>& inPlans) {
    std::array<EntryUse, 256> uses{};
    for (const PvTablePlan::Frame& frame : inPlans) {
        if (frame.mOwn)
            continue;
        for (std::uint32_t entry = 0; entry < uses.size(); ++entry) {
            uses[entry].mFrames += frame.mUses[entry] != 0 ? 1 : 0;
            uses[entry].mPixels += frame.mUses[entry];
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

void PvTablePlan::AddFrame(const NvPackedFrame& inFrame, const NvIndexMap& inMap,
                           std::optional<NvColorTable> inOwn) {
    mFrames.push_back({inMap, std::move(inOwn), PvMapHistogram(inFrame.GetHistogram(), inMap)});
}

void PvTablePlan::OrderSharedTable() {
    const std::vector<std::uint32_t> order = MostUsedFirst(mFrames);
    NvColorTable ordered(static_cast<std::uint32_t>(std::max<std::size_t>(order.size(), 1)));
    NvIndexMap newIndices{};
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        ordered.SetColor(i, mShared.GetColor(order[i]));
        newIndices[order[i]] = static_cast<std::uint8_t>(i);
    }
    mShared = ordered;
    for (Frame& frame : mFrames) {
        if (frame.mOwn)
            continue;
        for (std::uint8_t& entry : frame.mMap)
            entry = newIndices[entry];
        frame.mUses = PvMapHistogram(frame.mUses, newIndices);
    }
}

void PvTablePlan::ReserveSpareEntry(const NvAnimation& inAnimation) {
    const std::uint32_t size = mShared.GetSize();
    if (size >= mSharedLimit)
        return;
    for (std::uint32_t i = 0; i < inAnimation.GetFrameCount(); ++i) {
        const bool isFullyDrawn = inAnimation.GetPackedFrame(i).IsFullyDrawn();
        if (mFrames[i].mOwn || isFullyDrawn || LowestUnused(mFrames[i].mUses) < size)
            continue;
        mShared.SetSize(size + 1);
        mShared.SetColor(size, NvColor{});
        return;
    }
}

std::unique_ptr<NvGIFFrame> PvTablePlan::MakeFrame(const NvAnimation& inAnimation, std::uint32_t inIndex) {
    const NvPackedFrame& packed = inAnimation.GetPackedFrame(inIndex);
    const Frame& plan = mFrames[inIndex];
    const std::uint32_t free = LowestUnused(plan.mUses);
    // A frame as read has at most 255 entries beside the transparent one, and differencing draws one of 256
    // whole.
    NvAssert(free < plan.mUses.size() || packed.IsFullyDrawn());
    std::unique_ptr<NvGIFFrame> frame =
        packed.Unpack(plan.mMap, plan.mOwn ? *plan.mOwn : mShared, static_cast<std::uint8_t>(free));
    NvGIFFrameInfo& info = frame->GetInfo();
    info.mHasLocalTable = plan.mOwn ? 1 : 0;
    info.mColorTable.Clear();
    info.mHasTransparency = 0; // its index was one of the table that the file had
    // The shared table is written by now: ReserveSpareEntry has added what would have to be added here.
    const std::uint32_t size = mShared.GetSize();
    frame->UpdateTransparency(plan.mOwn ? nullptr : &mShared, mSharedLimit, plan.mUses);
    NvAssert(mShared.GetSize() == size);
    return frame;
}

// A frame that draws with every entry may have to give one up, and two colours may become one.
std::uint64_t PvTablePlan::GetKnownCodes(const NvAnimation& inAnimation, std::uint32_t inIndex) const {
    const NvPackedFrame& packed = inAnimation.GetPackedFrame(inIndex);
    const Frame& plan = mFrames[inIndex];
    const auto unused = std::count(plan.mUses.begin(), plan.mUses.end(), 0U);
    const PvHistogram& before = packed.GetHistogram();
    const bool staysApart = std::count(before.begin(), before.end(), 0U) == unused;
    const std::uint32_t size = (plan.mOwn ? *plan.mOwn : mShared).GetSize();
    const bool hasSpare = plan.mUses.size() - static_cast<std::size_t>(unused) < size;
    return packed.HasFewCodes() && staysApart && hasSpare ? packed.GetCodeCount() : 0;
}

PvTablePlan PvPlanSharedTable(const NvAnimation& inAnimation, const NvColorTable& inTable,
                              std::uint32_t inLimit) {
    PvTablePlan plan;
    plan.mShared = inTable;
    plan.mSharedLimit = inLimit;
    NvIndexMap same;
    std::iota(same.begin(), same.end(), std::uint8_t{0});
    for (std::uint32_t i = 0; i < inAnimation.GetFrameCount(); ++i)
        plan.AddFrame(inAnimation.GetPackedFrame(i), same, std::nullopt);
    plan.OrderSharedTable();
    plan.ReserveSpareEntry(inAnimation);
    return plan;
}
