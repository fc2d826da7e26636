#include "nvcode2/gif/nvthumbnail.h"

#include <algorithm>
#include <cstddef>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"
#include "nvcode2/image/nvresize.h"

namespace {

using Pixel = NvGIFPlayer::Pixel;

/** inLength * inNumerator / inDenominator, rounded to nearest, at least 1. */
std::int32_t Reduce(std::uint64_t inLength, std::uint64_t inNumerator, std::uint64_t inDenominator) {
    const std::uint64_t reduced = (inLength * inNumerator + inDenominator / 2) / inDenominator;
    return static_cast<std::int32_t>(std::max<std::uint64_t>(reduced, 1));
}

/** A channel of an averaged canvas pixel over the backdrop. Transparent pixels have counted as black, so the
 *  channel has the weight of what was covered already. */
std::uint8_t LayOver(std::uint32_t inChannel, std::uint32_t inUncovered, std::uint8_t inBackdrop) {
    return static_cast<std::uint8_t>(inChannel + (inUncovered * inBackdrop + 127) / 255);
}

} // namespace

NvThumbnail::NvThumbnail(std::uint32_t inBoxWidth, std::uint32_t inBoxHeight, const NvBackdrop& inBackdrop)
    : mBoxWidth(inBoxWidth), mBoxHeight(inBoxHeight), mBackdrop(inBackdrop) {
    NvAssert(inBoxWidth && inBoxHeight);
    NvAssert(inBackdrop.mSquare);
}

NvRect NvThumbnail::Fit(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight) const {
    NvAssert(inScreenWidth && inScreenHeight);
    if (inScreenWidth <= mBoxWidth && inScreenHeight <= mBoxHeight)
        return {0, 0, static_cast<std::int32_t>(inScreenWidth), static_cast<std::int32_t>(inScreenHeight)};
    const bool isWide =
        std::uint64_t{inScreenWidth} * mBoxHeight >= std::uint64_t{inScreenHeight} * mBoxWidth;
    if (isWide)
        return {0, 0, static_cast<std::int32_t>(mBoxWidth), Reduce(inScreenHeight, mBoxWidth, inScreenWidth)};
    return {0, 0, Reduce(inScreenWidth, mBoxHeight, inScreenHeight), static_cast<std::int32_t>(mBoxHeight)};
}

NvRGBImage NvThumbnail::Render(const NvGIFPlayer& inPlayer, NvProgressIndicator* inIndicator) const {
    const NvRect size = Fit(inPlayer.GetScreenWidth(), inPlayer.GetScreenHeight());
    const auto width = static_cast<std::uint32_t>(size.right);
    const auto height = static_cast<std::uint32_t>(size.bottom);

    const std::uint32_t screenWidth = inPlayer.GetScreenWidth();
    const auto displayed = NvMakeArray<Pixel>(std::size_t{screenWidth} * inPlayer.GetScreenHeight());
    for (std::uint32_t y = 0; y < inPlayer.GetScreenHeight(); ++y)
        inPlayer.Read(y, {0, screenWidth}, displayed.get() + std::size_t{y} * screenWidth);

    // Each of a canvas pixel's four bytes is averaged by itself, so their order in memory does not matter.
    const auto reduced = NvMakeArray<Pixel>(std::size_t{width} * height);
    constexpr std::uint32_t km_Channels = sizeof(Pixel);
    NvResizeChannels(
        {reinterpret_cast<const std::uint8_t*>(displayed.get()), screenWidth * km_Channels, screenWidth,
         inPlayer.GetScreenHeight(), km_Channels},
        {reinterpret_cast<std::uint8_t*>(reduced.get()), width * km_Channels, width, height, km_Channels},
        km_Channels, inIndicator);

    NvRGBImage image(width, height);
    const NvPixelLock pixels(image);
    const Pixel* pixel = reduced.get();
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t* out = pixels.Row(y);
        for (std::uint32_t x = 0; x < width; ++x, ++pixel, out += 3) {
            const std::uint32_t uncovered = 255 - (*pixel >> 24);
            const NvColor backdrop = mBackdrop.At(x, y);
            out[0] = LayOver(*pixel & 0xFF, uncovered, backdrop.red);
            out[1] = LayOver(*pixel >> 8 & 0xFF, uncovered, backdrop.green);
            out[2] = LayOver(*pixel >> 16 & 0xFF, uncovered, backdrop.blue);
        }
    }
    return image;
}
