#include "win/optimizer/codes/pvswap.h"

#include <memory>
#include <utility>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/quant/nvpixelpairs.h"
#include "nvcode2/quant/nvpostdither.h"
#include "win/optimizer/look/pvlookcost.h"

namespace {

constexpr float km_MaxWork = 24800000.0F; // candidates times pixels

// Besides the search: a frame is copied, and its look or its sizes measured.
constexpr std::uint64_t km_PassesBeside = 4;

bool AreTooMany(std::uint32_t inCandidates, const NvGIFFrame& inFrame) {
    const auto width = static_cast<float>(inFrame.GetWidth());
    const auto height = static_cast<float>(inFrame.GetHeight());
    return static_cast<float>(inCandidates) > km_MaxWork / width / height;
}

std::int32_t SparedIndex(const NvGIFFrame& inFrame) {
    return inFrame.HasTransparency() ? std::int32_t{inFrame.GetTransparentIndex()} : km_SpareNothing;
}

std::uint32_t PostDitherSparing(NvGIFFrame& ioFrame, std::int32_t inSparedIndex) {
    NvIndexedImage* image = &ioFrame.GetImage();
    return inSparedIndex == km_SpareNothing
               ? PostDither(image)
               : PostDitherTransparent(image, static_cast<std::uint8_t>(inSparedIndex));
}

} // namespace

std::uint32_t PvPixelSwapper::CountSwapCandidates(const NvGIFFrame& inFrame) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvConstPixelLock pixels(image);
    const NvColor* colors = image.GetColorTable().GetColors();
    std::uint32_t count = 0;
    NvForEachPattern(
        pixels.Row(0), image.GetRowBytes(), image.GetWidth(), image.GetHeight(),
        [&](std::uint32_t y, std::uint32_t x) {
            if (NvIsSwappablePair(pixels.Row(y) + x, image.GetRowBytes(), colors, km_SpareNothing))
                ++count;
        });
    return count;
}

bool PvPixelSwapper::HasTooManyCandidates(const NvGIFFrame& inFrame) {
    return AreTooMany(CountSwapCandidates(inFrame), inFrame);
}

PvPixelSwapper::Result PvPixelSwapper::SwapPixelPairs(NvGIFFrame& ioFrame) {
    return Swap(ioFrame, km_SpareNothing);
}

PvPixelSwapper::Result PvPixelSwapper::SwapPixelPairs(NvGIFFrame& ioFrame, std::uint8_t inTransparentIndex) {
    return Swap(ioFrame, inTransparentIndex);
}

PvPixelSwapper::Result PvPixelSwapper::Swap(NvGIFFrame& ioFrame, std::int32_t inSparedIndex) {
    if (HasTooManyCandidates(ioFrame))
        return {PostDitherSparing(ioFrame, inSparedIndex), true};
    return {Search(ioFrame, inSparedIndex), false};
}

// A search that has used up its steps keeps what it exchanged up to then.
std::uint32_t PvPixelSwapper::Search(NvGIFFrame& ioFrame, std::int32_t inSparedIndex,
                                     std::uint64_t inMostSteps) {
    NvIndexedImage& image = ioFrame.GetImage();
    const NvColor* colors = image.GetColorTable().GetColors();
    const NvPixelLock pixels(image);
    std::uint32_t exchanged = 0;
    bool hasBegun = false;
    const std::uint64_t stepsBefore = mSearch.GetPixelSteps();
    NvForEachPattern(
        pixels.Row(0), image.GetRowBytes(), image.GetWidth(), image.GetHeight(),
        [&](std::uint32_t y, std::uint32_t x) {
            if (mSearch.GetPixelSteps() - stepsBefore >= inMostSteps)
                return;
            if (!NvIsSwappablePair(pixels.Row(y) + x, image.GetRowBytes(), colors, inSparedIndex))
                return;
            if (!hasBegun)
                mSearch.Begin(pixels.Row(0), image.GetWidth(), image.GetHeight(),
                              image.GetColorTable().GetSize(), ioFrame.GetInfo().mInterlaced != 0);
            hasBegun = true;
            exchanged += mSearch.ExchangeIfShorter(x, y) ? 1 : 0;
        });
    return exchanged;
}

std::uint32_t PvPixelSwapper::SwapIfWorthIt(NvGIFFrame& ioFrame) {
    const std::uint64_t pixels = std::uint64_t{ioFrame.GetWidth()} * ioFrame.GetHeight();
    mBudget.AddFrame(pixels);
    const std::uint32_t candidates = CountSwapCandidates(ioFrame);
    if (candidates == 0 || !mBudget.IsToBeTried())
        return 0; // most frames have none, sparing an index or not
    NvIndexedImage original = ioFrame.GetImage().Copy();
    const std::uint64_t stepsBefore = mSearch.GetPixelSteps();
    Sizes sizes;
    const std::uint32_t exchanged = SwapMeasured(ioFrame, AreTooMany(candidates, ioFrame), sizes);
    const bool isWorthIt =
        sizes.mAfter < sizes.mBefore &&
        PvLookCost(sizes.mAfter, PvFrameSimilarity(ioFrame, original)) < PvLookCost(sizes.mBefore, 1.0);
    if (exchanged > 0 && !isWorthIt)
        ioFrame.SetImage(std::move(original));
    const double saved = isWorthIt ? sizes.mBefore - sizes.mAfter : 0.0;
    mSavedBytes += saved;
    mBudget.Learn(km_PassesBeside * pixels + mSearch.GetPixelSteps() - stepsBefore, saved);
    return isWorthIt ? exchanged : 0;
}

/** @return  pairs that changed places */
std::uint32_t PvPixelSwapper::SwapMeasured(NvGIFFrame& ioFrame, bool inPostDithers, Sizes& outSizes) {
    const auto bytes = [](std::uint64_t inBits) { return static_cast<double>(inBits) / 8; };
    const std::int32_t spared = SparedIndex(ioFrame);
    if (inPostDithers)
        outSizes.mBefore = bytes(mEstimator.EstimateFrame(ioFrame));
    const std::uint32_t exchanged =
        inPostDithers ? PostDitherSparing(ioFrame, spared) : Search(ioFrame, spared, mBudget.GetStepsLeft());
    if (inPostDithers)
        outSizes.mAfter = bytes(mEstimator.EstimateFrame(ioFrame));
    else if (exchanged > 0) // nothing may have been searched
        outSizes = {bytes(mSearch.GetBitsBefore()), bytes(mSearch.GetBits())};
    return exchanged;
}
