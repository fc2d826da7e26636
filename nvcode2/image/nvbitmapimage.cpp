#include "nvcode2/image/nvbitmapimage.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvbytes.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/image/nvblit.h"
#include "nvcode2/image/nvmaskrow.h"

namespace {

/** A layout known to the compiler, for the loops that every screen and every RGB image takes. */
template <std::uint32_t PixelBytes, std::uint32_t Red, std::uint32_t Green, std::uint32_t Blue>
struct FixedLayout {
    static constexpr std::uint32_t pixelBytes = PixelBytes;
    static constexpr std::uint32_t redIndex = Red;
    static constexpr std::uint32_t greenIndex = Green;
    static constexpr std::uint32_t blueIndex = Blue;

    static bool Is(const NvRGBLayout& inLayout) {
        return inLayout.pixelBytes == PixelBytes && inLayout.redIndex == Red &&
               inLayout.greenIndex == Green && inLayout.blueIndex == Blue;
    }
};

using ScreenLayout = FixedLayout<4, 1, 2, 3>;
using PackedLayout = FixedLayout<3, 0, 1, 2>;

/** 0.0 keeps what is there, 1.0 replaces it. */
int WeightOf(double inOpacity) {
    return inOpacity > 0 ? static_cast<int>(std::lround(std::min(inOpacity, 1.0) * 256)) : 0;
}

} // namespace

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
    auto image = NvAllocate([&] { return std::make_unique<NvBitmapImage>(); });
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
    auto image = NvAllocate([&] {
        return std::make_unique<NvBitmapImage>(static_cast<std::uint32_t>(inRect.Width()),
                                               static_cast<std::uint32_t>(inRect.Height()));
    });
    image->mPolarity = mPolarity;
    image->mFill = mFill;
    return image;
}

void NvBitmapImage::Erase() {
    if (!IsAllocated())
        return;
    const NvPixelLock pixels(*this);
    const bool hasOnes = mPolarity ? mFill == 0 : mFill == 1;
    for (std::uint32_t y = 0; y < mHeight; ++y)
        std::memset(pixels.Row(y), hasOnes ? 0xFF : 0x00, GetRowBytes());
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

bool NvBitmapImage::FindContentBounds(NvRect& outBounds) const {
    outBounds = {};
    const NvConstPixelLock pixels(*this);
    const std::uint64_t nothing = mPolarity ? ~std::uint64_t{0} : 0; // of eight bytes
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        const std::uint8_t* const row = pixels.Row(y);
        const auto left = static_cast<std::int32_t>(NvFindBit(row, mWidth, 0, mPolarity == 0));
        if (std::cmp_equal(left, mWidth))
            continue;
        std::size_t stop = GetRowBytes();
        while (BitsSetIn(row, stop - 1) == 0)
            stop -= stop > 9 && NvLoadLittleEndian(row + stop - 9) == nothing ? 9 : 1;
        const auto right = static_cast<int>(stop * 8) - std::countr_zero(BitsSetIn(row, stop - 1));
        GrowBounds(outBounds, left, right, static_cast<std::int32_t>(y));
    }
    return !outBounds.IsEmpty();
}

void NvBitmapImage::Combine(const NvBitmapImage& inMask, NvMaskRule inRule) {
    NvAssert(inMask.mWidth == mWidth && inMask.mHeight == mHeight);
    const NvPixelLock pixels(*this);
    const NvConstPixelLock other(inMask);
    const unsigned flip = mPolarity ? 0xFF : 0;
    const unsigned otherFlip = inMask.mPolarity ? 0xFF : 0;
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        std::uint8_t* const row = pixels.Row(y);
        const std::uint8_t* const otherRow = other.Row(y);
        for (std::uint32_t i = 0; i < GetRowBytes(); ++i) {
            const unsigned ours = row[i] ^ flip;
            const unsigned theirs = otherRow[i] ^ otherFlip;
            const unsigned bits = inRule == NvMaskRule::km_Both     ? ours & theirs
                                  : inRule == NvMaskRule::km_Either ? ours | theirs
                                                                    : ours & ~theirs;
            row[i] = static_cast<std::uint8_t>(bits ^ flip);
        }
    }
}

template <typename Mix>
void NvBitmapImage::MixMasked(const NvRect& inMaskRect, const std::uint8_t* inColors,
                              std::uint32_t inColorRowBytes, const NvPixelTarget& inTarget, Mix inMix) const {
    if (inMaskRect.IsEmpty())
        return;
    AssertInside(inMaskRect);
    NvAssertLayout(inTarget.layout);
    NvAssert(inColors && inTarget.data);
    NvAssert(inTarget.HasRoomFor(inMaskRect.Width()));
    const NvConstPixelLock mask(*this);
    const auto mixRows = [&](const auto& inLayout) {
        const std::uint8_t* colors = inColors;
        std::uint8_t* dest = inTarget.First();
        for (std::int32_t y = inMaskRect.top; y < inMaskRect.bottom; ++y) {
            const std::uint8_t* const bits = mask.Row(static_cast<std::uint32_t>(y));
            const std::uint8_t* color = colors;
            std::uint8_t* pixel = dest;
            for (std::int32_t x = inMaskRect.left; x < inMaskRect.right; ++x) {
                if (GetBit(bits, GetRowBytes(), static_cast<std::uint32_t>(x), 0) != mPolarity) {
                    inMix(pixel[inLayout.redIndex], color[0]);
                    inMix(pixel[inLayout.greenIndex], color[1]);
                    inMix(pixel[inLayout.blueIndex], color[2]);
                }
                color += 3;
                pixel += inLayout.pixelBytes;
            }
            colors += inColorRowBytes;
            dest += inTarget.rowBytes;
        }
    };
    if (ScreenLayout::Is(inTarget.layout))
        mixRows(ScreenLayout{});
    else if (PackedLayout::Is(inTarget.layout))
        mixRows(PackedLayout{});
    else
        mixRows(inTarget.layout);
}

void NvBitmapImage::WriteMasked(const NvRect& inMaskRect, const std::uint8_t* inColors,
                                std::uint32_t inColorRowBytes, const NvPixelTarget& inTarget) const {
    MixMasked(inMaskRect, inColors, inColorRowBytes, inTarget,
              [](std::uint8_t& ioDest, std::uint8_t inSource) { ioDest = inSource; });
}

void NvBitmapImage::BlendMasked(const NvRect& inMaskRect, const std::uint8_t* inColors,
                                std::uint32_t inColorRowBytes, const NvPixelTarget& inTarget,
                                double inOpacity) const {
    const int weight = WeightOf(inOpacity);
    MixMasked(inMaskRect, inColors, inColorRowBytes, inTarget,
              [=](std::uint8_t& ioDest, std::uint8_t inSource) {
                  // Rounded alike in both directions.
                  const int step = (std::abs(inSource - ioDest) * weight + 128) >> 8;
                  ioDest = static_cast<std::uint8_t>(ioDest < inSource ? std::min(ioDest + step, 255)
                                                                       : std::max(ioDest - step, 0));
              });
}

void NvBitmapImage::Invert() {
    const NvPixelLock pixels(*this);
    NvInvert(pixels.Row(0), GetRowBytes(), GetRowBytes(), mHeight);
}
