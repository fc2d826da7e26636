#include "win/pvswap.h"

#include <utility>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvpixelpairs.h"
#include "nvcode2/nvpostdither.h"
#include "win/pvprogress.h"

namespace {
constexpr float km_MaxWork = 24800000.0F; // candidates times pixels
}

std::uint32_t PvPixelSwapper::CountSwapCandidates(const NvGIFFrame& inFrame) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvConstPixelLock pixels(image);
    const NvColor* colors = image.GetColorTable().GetColors();
    std::uint32_t count = 0;
    NvForEachPairPosition(image.GetWidth(), image.GetHeight(), [&](std::uint32_t y, std::uint32_t x) {
        if (NvIsSwappablePair(pixels.Row(y) + x, image.GetRowBytes(), colors, km_SpareNothing))
            ++count;
    });
    return count;
}

bool PvPixelSwapper::HasTooManyCandidates(const NvGIFFrame& inFrame) {
    const auto width = static_cast<float>(inFrame.GetWidth());
    const auto height = static_cast<float>(inFrame.GetHeight());
    const float limit = km_MaxWork / width / height;
    return static_cast<float>(CountSwapCandidates(inFrame)) > limit;
}

PvPixelSwapper::Result PvPixelSwapper::SwapPixelPairs(NvGIFFrame& ioFrame) {
    return Swap(ioFrame, km_SpareNothing);
}

PvPixelSwapper::Result PvPixelSwapper::SwapPixelPairs(NvGIFFrame& ioFrame, std::uint8_t inTransparentIndex) {
    return Swap(ioFrame, inTransparentIndex);
}

PvPixelSwapper::Result PvPixelSwapper::Swap(NvGIFFrame& ioFrame, std::int32_t inSparedIndex) {
    if (!HasTooManyCandidates(ioFrame))
        return {Search(ioFrame, inSparedIndex), false};
    NvIndexedImage* image = &ioFrame.GetImage();
    if (inSparedIndex == km_SpareNothing)
        return {PostDither(image), true};
    return {PostDitherTransparent(image, static_cast<std::uint8_t>(inSparedIndex)), true};
}

// Most frames have no candidate at all, so the frame is first estimated when one turns up.
std::uint32_t PvPixelSwapper::Search(NvGIFFrame& ioFrame, std::int32_t inSparedIndex) {
    NvIndexedImage& image = ioFrame.GetImage();
    const NvColor* colors = image.GetColorTable().GetColors();
    const NvPixelLock pixels(image);
    std::uint32_t exchanged = 0;
    std::uint64_t best = 0; // bits; 0: not measured yet
    NvForEachPairPosition(image.GetWidth(), image.GetHeight(), [&](std::uint32_t y, std::uint32_t x) {
        std::uint8_t* pixel = pixels.Row(y) + x;
        if (!NvIsSwappablePair(pixel, image.GetRowBytes(), colors, inSparedIndex))
            return;
        if (best == 0)
            best = mEstimator.EstimateFrame(ioFrame);
        std::swap(pixel[0], pixel[1]);
        const std::uint64_t size = mEstimator.EstimateFrame(ioFrame);
        if (size >= best) {
            std::swap(pixel[0], pixel[1]);
            return;
        }
        best = size;
        ++exchanged;
    });
    return exchanged;
}

PvPixelSwapper::Result PvPixelSwapper::SwapFrame(NvGIFFrame& ioFrame) {
    if (ioFrame.HasTransparency())
        return SwapPixelPairs(ioFrame, ioFrame.GetTransparentIndex());
    return SwapPixelPairs(ioFrame);
}

std::uint64_t PvPixelSwapper::SwapAllFrames(NvAnimation& ioAnimation, PvProgress& ioProgress) {
    std::uint64_t exchanged = 0;
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        ioProgress.ReportFrame(i, ioAnimation.GetFrameCount());
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        if (!HasTooManyCandidates(frame)) {
            exchanged += SwapFrame(frame).mExchanged;
            continue;
        }
        const std::uint64_t before = mEstimator.EstimateFrame(frame);
        NvIndexedImage original;
        original.CopyFrom(frame.GetImage());
        const Result result = SwapFrame(frame);
        if (result.mPostDithered && mEstimator.EstimateFrame(frame) >= before)
            frame.SetImage(std::move(original));
        else
            exchanged += result.mExchanged;
    }
    return exchanged;
}
