// Pixels of a real image on their way: to other images and memory, between channels, mirrored.

#include <utility>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/image/nvbitmapimage.h"
#include "nvcode2/image/nvblit.h"
#include "nvcode2/image/nvflip.h"
#include "nvcode2/image/nvrealimage.h"

std::unique_ptr<NvImage> NvRealImage::CopyRegion(const NvRect& inRect) const {
    AssertInside(inRect);
    std::unique_ptr<NvImage> retImagePtr = NewBlankImage(inRect);
    auto& region = static_cast<NvRealImage&>(*retImagePtr);
    const NvConstPixelLock source(*this);
    const NvPixelLock dest(region);
    NvCopyRect(source.GetBlock(), inRect, dest.GetBlock(), region.GetBounds(), mChannelDepth);
    return retImagePtr;
}

void NvRealImage::PasteImage(const NvImage& inImage, NvPoint inTopLeft) {
    AssertSameShape(inImage);
    NvAssertText(inTopLeft.h >= 0 && inTopLeft.v >= 0 &&
                     inTopLeft.h + std::int64_t{inImage.GetWidth()} <= mWidth &&
                     inTopLeft.v + std::int64_t{inImage.GetHeight()} <= mHeight,
                 "(inTopLeft.h + inImage->GetWidth() <= GetWidth()) && "
                 "(inTopLeft.v + inImage->GetHeight() <= GetHeight())");
    const auto& image = static_cast<const NvRealImage&>(inImage);
    const NvRect sourceRect = image.GetBounds();
    const NvRect destRect{inTopLeft.h, inTopLeft.v, inTopLeft.h + sourceRect.right,
                          inTopLeft.v + sourceRect.bottom};
    const NvConstPixelLock source(image);
    const NvPixelLock dest(*this);
    NvCopyRect(source.GetBlock(), sourceRect, dest.GetBlock(), destRect, mChannelDepth);
}

std::unique_ptr<NvImage> NvRealImage::NewHorizontalMirror() const {
    std::unique_ptr<NvImage> retImagePtr = Clone();
    NvAssert(retImagePtr);
    const NvPixelLock pixels(static_cast<NvRealImage&>(*retImagePtr));
    if (mChannelDepth == 1) {
        NvAssert(mNumChannels == 1);
        NvMirrorBits(pixels.Row(0), mRowBytes, mWidth, mHeight);
        return retImagePtr;
    }
    NvAssertText(mChannelDepth % 8 == 0, "!(mChannelDepth%8)");
    const std::uint32_t pixelBytes = mNumChannels * (mChannelDepth / 8u);
    if (pixelBytes == 1)
        NvMirrorBytes(pixels.Row(0), mRowBytes, mWidth, mHeight);
    else if (pixelBytes == 4)
        NvMirror4BytePixels(pixels.Row(0), mRowBytes, mWidth, mHeight);
    else
        NvMirrorPixels(pixels.Row(0), mRowBytes, mWidth, mHeight, pixelBytes);
    return retImagePtr;
}

std::unique_ptr<NvImage> NvRealImage::NewVerticalMirror() const {
    std::unique_ptr<NvImage> retImagePtr = Clone();
    NvAssert(retImagePtr);
    const NvPixelLock pixels(static_cast<NvRealImage&>(*retImagePtr));
    NvMirrorRows(pixels.Row(0), mRowBytes, mWidth, mHeight);
    return retImagePtr;
}

void NvRealImage::ReadColors(const NvRect& inSourceRect, const NvPixelTarget& inTarget) const {
    AssertTransfer(inSourceRect, inTarget);
    ReadRGB(inSourceRect, inTarget.First(), inTarget.rowBytes, inTarget.layout);
}

void NvRealImage::ReadMaskedColors(const NvRect& inSourceRect, const NvBitmapImage& inMask,
                                   const NvPixelTarget& inTarget) const {
    AssertTransfer(inSourceRect, inTarget);
    NvAssert(inMask.GetWidth() == mWidth && inMask.GetHeight() == mHeight);
    const std::uint32_t rowBytes = NvPackedRowBytes(8, 3, static_cast<std::uint32_t>(inSourceRect.Width()));
    const auto colors = NvMakeArray<std::uint8_t>(rowBytes);
    NvRect row = inSourceRect;
    NvPixelTarget target = inTarget;
    for (row.bottom = row.top + 1; row.top < inSourceRect.bottom; ++row.top, ++row.bottom, ++target.point.v) {
        ReadRGB(row, colors.get(), rowBytes, {});
        inMask.WriteMasked(row, colors.get(), rowBytes, target);
    }
}

void NvRealImage::ReadChannel(std::uint32_t inChannel, const NvRect& inSourceRect, std::uint8_t* outData,
                              std::uint32_t inDestRowBytes) const {
    AssertInside(inSourceRect);
    const NvConstPixelLock pixels(*this);
    const NvRect destRect{0, 0, inSourceRect.Width(), inSourceRect.Height()};
    NvCopyFromChannels(pixels.GetBlock(), inSourceRect, inChannel,
                       {outData, inDestRowBytes, static_cast<std::uint32_t>(destRect.right),
                        static_cast<std::uint32_t>(destRect.bottom)},
                       destRect, mChannelDepth);
}

void NvRealImage::WriteChannel(std::uint32_t inChannel, const NvRect& inDestRect, const std::uint8_t* inData,
                               std::uint32_t inSourceRowBytes) {
    AssertInside(inDestRect);
    const NvPixelLock pixels(*this);
    const NvRect sourceRect{0, 0, inDestRect.Width(), inDestRect.Height()};
    NvCopyIntoChannels({inData, inSourceRowBytes, static_cast<std::uint32_t>(sourceRect.right),
                        static_cast<std::uint32_t>(sourceRect.bottom)},
                       sourceRect, pixels.GetBlock(), inDestRect, inChannel, mChannelDepth);
}

void NvRealImage::SwapChannels(std::uint32_t inChannelA, std::uint32_t inChannelB) {
    NvAssert(mChannelDepth == 8);
    const NvPixelLock pixels(*this);
    NvSwapChannels(pixels.GetBlock(), inChannelA, inChannelB);
}

void NvRealImage::CopyPixels(const NvRealImage& inImage) {
    AssertSameShape(inImage);
    NvAssert(inImage.mWidth == mWidth && inImage.mHeight == mHeight);
    if (mWidth == 0 || mHeight == 0 || &inImage == this)
        return;
    const NvConstPixelLock source(inImage);
    const NvPixelLock dest(*this);
    NvCopyRect(source.GetBlock(), GetBounds(), dest.GetBlock(), GetBounds(), mChannelDepth);
}

void NvRealImage::AssertSameShape(const NvImage& inImage) const {
    NvAssertText(GetImageType() == inImage.GetImageType(), "GetImageType() == inImage->GetImageType()");
    const auto& image = static_cast<const NvRealImage&>(inImage);
    NvAssertText(image.mNumChannels == mNumChannels && image.mChannelDepth == mChannelDepth,
                 "((NvRealImage *)inImage)->GetNumChannels() == GetNumChannels() && "
                 "((NvRealImage *)inImage)->GetChannelDepth() == GetChannelDepth()");
}

void NvRealImage::AssertTransfer(const NvRect& inSourceRect, const NvPixelTarget& inTarget) const {
    const auto [inDestPixelBytes, inDestRedIndex, inDestGreenIndex, inDestBlueIndex] = inTarget.layout;
    const std::int64_t rowEnd = std::int64_t{inTarget.point.h} + inSourceRect.Width();
    NvAssertText(
        !inSourceRect.IsEmpty() && std::cmp_less_equal(inSourceRect.right, mWidth) &&
            std::cmp_less_equal(inSourceRect.bottom, mHeight) && inDestRedIndex < inDestPixelBytes &&
            inDestGreenIndex < inDestPixelBytes && inDestBlueIndex < inDestPixelBytes &&
            inDestRedIndex != inDestGreenIndex && inDestRedIndex != inDestBlueIndex &&
            inDestBlueIndex != inDestGreenIndex && rowEnd * inDestPixelBytes <= inTarget.rowBytes,
        "!( (inSourceRect.left >= inSourceRect.right) || (inSourceRect.top >= inSourceRect.bottom) || "
        "(inSourceRect.right > mWidth) || (inSourceRect.bottom > mHeight) || (inDestRedIndex >= "
        "inDestPixelBytes) "
        "|| (inDestGreenIndex >= inDestPixelBytes) || (inDestBlueIndex >= inDestPixelBytes) || "
        "(inDestRedIndex == inDestGreenIndex) || (inDestRedIndex == inDestBlueIndex) || "
        "(inDestBlueIndex == inDestGreenIndex) || ( ((inDestPoint.h + outWidth) * inDestPixelBytes) > "
        "inDestRowBytes ) )");
    NvAssert(inTarget.HasRoomFor(inSourceRect.Width()));
}
