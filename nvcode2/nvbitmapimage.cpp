#include "nvcode2/nvbitmapimage.h"

#include <cstring>

#include "nvcode2/nvallocate.h"
#include "nvcode2/nverrorcode.h"

NvBitmapImage::NvBitmapImage() : NvBitmapImage(0, 0) {}

NvBitmapImage::NvBitmapImage(std::uint32_t inWidth, std::uint32_t inHeight, std::uint8_t inPolarity,
                             std::uint32_t inFill)
    : NvRealImage(inWidth, inHeight, 1, 1, &NvPackedRowBytes, nullptr, km_BitmapImage),
      mFill(inFill),
      mPolarity(inPolarity) {
    SetPolarity(inPolarity);
    NvBitmapImage::Erase();
}

void NvBitmapImage::SetPolarity(std::uint8_t inPolarity) {
    if (inPolarity > 1)
        NvThrow(NvErrorCode::km_BadParameter);
    mPolarity = inPolarity;
}

std::unique_ptr<NvImage> NvBitmapImage::Clone() const {
    auto image = NvMakeUnique<NvBitmapImage>();
    image->mPolarity = mPolarity;
    image->CopyFrom(*this);
    return image;
}

void NvBitmapImage::CopyFrom(const NvImage& inImage) {
    NvAssert(GetImageType() == inImage.GetImageType());
    const auto& image = static_cast<const NvBitmapImage&>(inImage);
    if (image.mPolarity != mPolarity)
        NvThrow(NvErrorCode::km_BadParameter);
    SetSize(image.mWidth, image.mHeight);
    CopyPixels(image);
    SetResolution(image.GetHorizontalResolution(), image.GetVerticalResolution());
    mFill = image.mFill;
}

std::unique_ptr<NvImage> NvBitmapImage::NewBlankImage(const NvRect& inRect) const {
    auto image = NvMakeUnique<NvBitmapImage>(static_cast<std::uint32_t>(inRect.Width()),
                                             static_cast<std::uint32_t>(inRect.Height()));
    image->mPolarity = mPolarity;
    image->mFill = mFill;
    return image;
}

void NvBitmapImage::Erase() {
    if (!IsAllocated())
        return;
    const NvPixelLock pixels(*this);
    const int byte = (mFill != 0) != (mPolarity != 0) ? 0xFF : 0x00;
    for (std::uint32_t y = 0; y < mHeight; ++y)
        std::memset(pixels.Row(y), byte, GetRowBytes());
}

void NvBitmapImage::ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                            const NvRGBLayout& inLayout) const {
    AssertInside(inSourceRect);
    NvAssertLayout(inLayout);
    NvAssert(outData);
    const NvConstPixelLock pixels(*this);
    for (std::int32_t y = inSourceRect.top; y < inSourceRect.bottom; ++y) {
        const std::uint8_t* const row = pixels.Row(static_cast<std::uint32_t>(y));
        std::uint8_t* out = outData;
        for (std::int32_t x = inSourceRect.left; x < inSourceRect.right; ++x) {
            const bool isSet = GetBit(row, GetRowBytes(), static_cast<std::uint32_t>(x), 0) != mPolarity;
            const std::uint8_t level = isSet ? 255 : 0;
            out[inLayout.redIndex] = level;
            out[inLayout.greenIndex] = level;
            out[inLayout.blueIndex] = level;
            out += inLayout.pixelBytes;
        }
        outData += inDestRowBytes;
    }
}
