#include "nvcode2/quant/nvpostdither.h"

#include <utility>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/image/nvindexedimage.h"
#include "nvcode2/quant/nvpixelpairs.h"

namespace {

std::uint32_t ExchangePairs(NvIndexedImage& ioImage, std::int32_t inSparedIndex) {
    const NvColor* colors = ioImage.GetColorTable().GetColors();
    const std::uint32_t stride = ioImage.GetRowBytes();
    const NvPixelLock pixels(ioImage);
    std::uint32_t exchanged = 0;
    NvForEachPattern(pixels.Row(0), stride, ioImage.GetWidth(), ioImage.GetHeight(),
                     [&](std::uint32_t y, std::uint32_t x) {
                         std::uint8_t* pixel = pixels.Row(y) + x;
                         if (!NvIsSwappablePair(pixel, stride, colors, inSparedIndex))
                             return;
                         std::swap(pixel[0], pixel[1]);
                         ++exchanged;
                     });
    return exchanged;
}

} // namespace

std::uint32_t PostDither(NvIndexedImage* ioImage) {
    NvAssertText(ioImage, "ioImagePtr");
    return ExchangePairs(*ioImage, km_SpareNothing);
}

std::uint32_t PostDitherTransparent(NvIndexedImage* ioImage, std::uint8_t inTransparentIndex) {
    NvAssertText(ioImage, "ioImagePtr");
    return ExchangePairs(*ioImage, inTransparentIndex);
}
