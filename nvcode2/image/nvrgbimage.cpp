#include "nvcode2/image/nvrgbimage.h"

#include <cstddef>
#include <cstring>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/image/nvblit.h"
#include "nvcode2/image/nvmakeinvcolormap.h"
#include "nvcode2/image/nvresize.h"

NvRGBImage::NvRGBImage() : NvRGBImage(0, 0) {}

NvRGBImage::NvRGBImage(std::uint32_t inWidth, std::uint32_t inHeight)
    : NvRealImage(inWidth, inHeight, 8, 3, &NvPackedRowBytes, nullptr, km_RGBImage) {}

std::unique_ptr<NvImage> NvRGBImage::Clone() const {
    auto image = NvAllocate([&] { return std::make_unique<NvRGBImage>(); });
    image->CopyFrom(*this);
    return image;
}

void NvRGBImage::CopyFrom(const NvImage& inImage) {
    NvAssert(GetImageType() == inImage.GetImageType());
    const auto& image = static_cast<const NvRGBImage&>(inImage);
    SetSize(image.mWidth, image.mHeight);
    CopyPixels(image);
    SetResolution(image.GetHorizontalResolution(), image.GetVerticalResolution());
}

std::unique_ptr<NvImage> NvRGBImage::NewBlankImage(const NvRect& inRect) const {
    return NvAllocate([&] {
        return std::make_unique<NvRGBImage>(static_cast<std::uint32_t>(inRect.Width()),
                                            static_cast<std::uint32_t>(inRect.Height()));
    });
}

void NvRGBImage::ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                         const NvRGBLayout& inLayout) const {
    AssertInside(inSourceRect);
    NvAssertLayout(inLayout);
    NvAssert(outData);
    const NvConstPixelLock pixels(*this);
    for (std::int32_t y = inSourceRect.top; y < inSourceRect.bottom; ++y) {
        const std::uint8_t* pixel =
            pixels.Row(static_cast<std::uint32_t>(y)) + std::ptrdiff_t{3} * inSourceRect.left;
        std::uint8_t* out = outData;
        for (std::int32_t x = inSourceRect.left; x < inSourceRect.right; ++x) {
            out[inLayout.redIndex] = pixel[0];
            out[inLayout.greenIndex] = pixel[1];
            out[inLayout.blueIndex] = pixel[2];
            pixel += 3;
            out += inLayout.pixelBytes;
        }
        outData += inDestRowBytes;
    }
}

void NvRGBImage::Invert() {
    const NvPixelLock pixels(*this);
    NvInvert(pixels.Row(0), GetRowBytes(), GetRowBytes(), mHeight);
}

std::unique_ptr<NvImage> NvRGBImage::NewResizedImage(std::uint32_t inWidth, std::uint32_t inHeight,
                                                     NvProgressIndicator* inIndicator) const {
    auto image = NvAllocate([&] { return std::make_unique<NvRGBImage>(inWidth, inHeight); });
    const NvConstPixelLock source(*this);
    const NvPixelLock dest(*image);
    NvResizeRGB(source.GetBlock(), dest.GetBlock(), inIndicator);
    return image;
}

NvIndexedImage NvRGBImage::ToIndexed(const NvColorTable& inTable, const std::uint8_t* inInvMap,
                                     NvProgressIndicator* inIndicator) const {
    NvAssert(inInvMap);
    NvIndexedImage image(mWidth, mHeight, inTable);
    const NvConstPixelLock source(*this);
    const NvPixelLock dest(image);
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        const std::uint8_t* pixel = source.Row(y);
        std::uint8_t* const row = dest.Row(y);
        for (std::uint32_t x = 0; x < mWidth; ++x, pixel += 3)
            row[x] = inInvMap[NvInverseColorMapCell({pixel[0], pixel[1], pixel[2]})];
        NvReportProgress(inIndicator, y + 1, mHeight);
    }
    return image;
}
