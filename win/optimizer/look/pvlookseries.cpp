#include "win/optimizer/look/pvlookseries.h"

#include <algorithm>
#include <utility>

namespace {

// A frame of fewer windows than this is too small for its structure to be judged by similarity.
constexpr std::uint32_t km_SizableArea = 32;

// Measuring every frame led to the same choices on all of 119 real files.
constexpr std::uint32_t km_FramesMeasured = 48;

} // namespace

double PvStructureOf(const PvFrameLook& inLook) {
    return inLook.mContrastWindows >= km_SizableArea ? inLook.mContrastSsim : 1.0;
}

PvLookSeries::PvLookSeries(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inFrameCount)
    : mMeter(inWidth, inHeight, inFrameCount == 1),
      mFramesLeft(inFrameCount),
      mMeasureEvery((inFrameCount + km_FramesMeasured - 1) / km_FramesMeasured),
      mChanged(inHeight) {}

bool PvLookSeries::ShowFrame(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond) {
    PvForEachChangedRow(inFirst, inSecond, [this](std::uint32_t inY, const NvGIFPlayer::Columns& inColumns) {
        mChanged[inY].Add(inColumns);
    });
    if (--mFramesLeft % mMeasureEvery != 0)
        return false;
    const bool isWorst = Add(mMeter.Measure(inFirst, inSecond, mChanged));
    std::fill(mChanged.begin(), mChanged.end(), NvGIFPlayer::Columns());
    return isWorst;
}

bool PvLookSeries::Add(const PvFrameLook& inLook) {
    const auto rank = [](const PvFrameLook& inAny) {
        return std::make_pair(PvStructureOf(inAny), inAny.mSsim);
    };
    mStructureSum += PvStructureOf(inLook);
    ++mCount;
    if (rank(inLook) >= rank(mWorst))
        return false;
    mWorst = inLook;
    return true;
}
