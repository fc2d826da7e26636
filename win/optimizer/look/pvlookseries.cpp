#include "win/optimizer/look/pvlookseries.h"

#include <algorithm>
#include <utility>

namespace {

// A frame of fewer windows than this is too small for its structure to be judged by similarity.
constexpr std::uint32_t km_SizableArea = 32;
constexpr std::uint32_t km_FramesMeasured = 48;

} // namespace

NvGIFPlayer::Columns PvChangedColumns(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond,
                                      std::uint32_t inY) {
    NvGIFPlayer::Columns changed = inFirst.GetChangedColumns(inY);
    changed.Add(inSecond.GetChangedColumns(inY));
    return changed;
}

double PvStructureOf(const PvFrameLook& inLook) {
    return inLook.mContrastWindows >= km_SizableArea ? inLook.mContrastSsim : 1.0;
}

PvLookSeries::PvLookSeries(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inFrameCount)
    : mMeter(inWidth, inHeight, inFrameCount == 1),
      mFramesLeft(inFrameCount),
      mMeasureEvery((inFrameCount + km_FramesMeasured - 1) / km_FramesMeasured),
      mChanged(inHeight) {}

void PvLookSeries::ShowFrame(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond) {
    for (std::uint32_t y = 0; y < mChanged.size(); ++y)
        mChanged[y].Add(PvChangedColumns(inFirst, inSecond, y));
    if (--mFramesLeft % mMeasureEvery != 0)
        return;
    Add(mMeter.Measure(inFirst, inSecond, mChanged), inFirst, inSecond);
    std::fill(mChanged.begin(), mChanged.end(), NvGIFPlayer::Columns());
}

void PvLookSeries::Add(const PvFrameLook& inLook, const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond) {
    const auto rank = [](const PvFrameLook& inAny) {
        return std::make_pair(PvStructureOf(inAny), inAny.mSsim);
    };
    if (rank(inLook) < rank(mWorst)) {
        mWorst = inLook;
        PvMeasureErrors(inFirst, inSecond, mWorst);
    }
    mStructureSum += PvStructureOf(inLook);
    ++mCount;
}
