#include "nvcode2/image/nvindexedimage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <utility>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvbytes.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/image/nvbitmapimage.h"
#include "nvcode2/image/nvmakeinvcolormap.h"
#include "nvcode2/image/nvresize.h"

namespace {

/** A bit for each of eight pixels that is not inIndex, the first pixel's on top. */
std::uint8_t OthersOfEight(const std::uint8_t* inPixels, std::uint8_t inIndex) {
    return static_cast<std::uint8_t>(~NvBitsOfEight(inPixels, inIndex));
}

} // namespace

NvIndexedImage::NvIndexedImage() : NvIndexedImage(0, 0, NvColorTable()) {}

NvIndexedImage::NvIndexedImage(std::uint32_t inWidth, std::uint32_t inHeight, const NvColorTable& inTable)
    : NvRealImage(inWidth, inHeight, 8, 1, &NvPackedRowBytes, nullptr, km_IndexedImage),
      mColorTable(inTable) {}

std::unique_ptr<NvImage> NvIndexedImage::Clone() const {
    auto image = NvAllocate([&] { return std::make_unique<NvIndexedImage>(); });
    image->CopyFrom(*this);
    return image;
}

NvIndexedImage NvIndexedImage::Copy() const {
    NvIndexedImage image;
    image.CopyFrom(*this);
    return image;
}

void NvIndexedImage::CopyFrom(const NvImage& inImage) {
    NvAssert(GetImageType() == inImage.GetImageType());
    const auto& image = static_cast<const NvIndexedImage&>(inImage);
    NvColorTable table(image.mColorTable);
    SetSize(image.mWidth, image.mHeight);
    CopyPixels(image);
    SetResolution(image.GetHorizontalResolution(), image.GetVerticalResolution());
    mColorTable = std::move(table);
    mFillIndex = image.mFillIndex;
}

std::unique_ptr<NvImage> NvIndexedImage::NewBlankImage(const NvRect& inRect) const {
    auto image = NvAllocate([&] {
        return std::make_unique<NvIndexedImage>(static_cast<std::uint32_t>(inRect.Width()),
                                                static_cast<std::uint32_t>(inRect.Height()), mColorTable);
    });
    image->mFillIndex = mFillIndex;
    return image;
}

void NvIndexedImage::Erase() {
    NvAssert(IsAllocated());
    const NvPixelLock pixels(*this);
    for (std::uint32_t y = 0; y < mHeight; ++y)
        std::memset(pixels.Row(y), GetFillIndex(), mWidth);
}

void NvIndexedImage::ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                             const NvRGBLayout& inLayout) const {
    AssertInside(inSourceRect);
    NvAssertLayout(inLayout);
    NvAssert(outData);
    std::array<NvColor, 256> colors{};
    std::copy_n(mColorTable.GetColors(), std::min(mColorTable.GetSize(), 256u), colors.begin());

    const NvConstPixelLock pixels(*this);
    for (std::int32_t y = inSourceRect.top; y < inSourceRect.bottom; ++y) {
        const std::uint8_t* const row = pixels.Row(static_cast<std::uint32_t>(y));
        std::uint8_t* out = outData;
        for (std::int32_t x = inSourceRect.left; x < inSourceRect.right; ++x) {
            const NvColor color = colors[row[x]];
            out[inLayout.redIndex] = color.red;
            out[inLayout.greenIndex] = color.green;
            out[inLayout.blueIndex] = color.blue;
            out += inLayout.pixelBytes;
        }
        outData += inDestRowBytes;
    }
}

bool NvIndexedImage::FindContentBounds(NvRect& outBounds) const {
    outBounds = {};
    const NvConstPixelLock pixels(*this);
    const auto isContent = [this](std::uint8_t inIndex) { return inIndex != GetFillIndex(); };
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        const std::uint8_t* const row = pixels.Row(y);
        const auto left = static_cast<std::int32_t>(std::find_if(row, row + mWidth, isContent) - row);
        if (std::cmp_equal(left, mWidth))
            continue;
        const auto fromRight =
            std::find_if(std::reverse_iterator(row + mWidth), std::reverse_iterator(row), isContent);
        const auto right = static_cast<std::int32_t>(fromRight.base() - row);
        GrowBounds(outBounds, left, right, static_cast<std::int32_t>(y));
    }
    return !outBounds.IsEmpty();
}

void NvIndexedImage::MapToTable(const NvColorTable* inTablePtr, const std::uint8_t* inInvMap) {
    NvAssert(inTablePtr);
    NvAssert(inInvMap);
    NvColorTable table(*inTablePtr);
    NvIndexMap map;
    for (std::uint32_t i = 0; i < map.size(); ++i) {
        const NvColor color = i < mColorTable.GetSize() ? mColorTable.GetColor(i) : NvColor{};
        map[i] = inInvMap[NvInverseColorMapCell(color)];
    }
    RemapIndices(map.data());
    mColorTable = std::move(table);
}

std::unique_ptr<NvImage> NvIndexedImage::NewResizedImage(std::uint32_t inWidth, std::uint32_t inHeight,
                                                         NvProgressIndicator* inIndicator) const {
    const auto inverseMap = NvMakeArray<std::uint8_t>(km_InverseColorMapSize);
    MakeInverseColorMap(&mColorTable, inverseMap.get());
    auto image = NvAllocate([&] { return std::make_unique<NvIndexedImage>(inWidth, inHeight, mColorTable); });
    const NvConstPixelLock source(*this);
    const NvPixelLock dest(*image);
    NvResizeIndexed(source.GetBlock(), dest.GetBlock(), &mColorTable, inverseMap.get(), inIndicator);
    return image;
}

NvBitmapImage NvIndexedImage::MakeMask(std::uint8_t inIndex) const {
    NvBitmapImage mask(mWidth, mHeight);
    const NvConstPixelLock pixels(*this);
    const NvPixelLock bits(mask);
    const std::uint32_t wholeBytes = mWidth / 8;
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        const std::uint8_t* const row = pixels.Row(y);
        std::uint8_t* const maskRow = bits.Row(y);
        for (std::uint32_t i = 0; i < wholeBytes; ++i)
            maskRow[i] = OthersOfEight(row + i * 8, inIndex);
        if (mWidth % 8 != 0) {
            std::array<std::uint8_t, 8> last;
            last.fill(inIndex);
            std::copy(row + wholeBytes * 8, row + mWidth, last.begin());
            maskRow[wholeBytes] = OthersOfEight(last.data(), inIndex);
        }
    }
    return mask;
}

std::uint8_t NvIndexedImage::GetPixel(std::uint32_t inH, std::uint32_t inV) const {
    NvAssert(!IsLocked());
    NvAssert(inH < mWidth && inV < mHeight);
    return NvConstPixelLock(*this).Row(inV)[inH];
}

void NvIndexedImage::RemapIndices(const std::uint8_t* inMap) {
    if (!inMap)
        NvThrow(NvErrorCode::km_MissingData);
    const NvPixelLock pixels(*this);
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        std::uint8_t* const row = pixels.Row(y);
        std::uint32_t x = 0;
        for (; x + 4 <= mWidth; x += 4) { // loads of the next pixels need not wait for stores
            const std::uint8_t four[] = {inMap[row[x]], inMap[row[x + 1]], inMap[row[x + 2]],
                                         inMap[row[x + 3]]};
            std::copy_n(four, 4, row + x);
        }
        for (; x < mWidth; ++x)
            row[x] = inMap[row[x]];
    }
}

std::uint8_t NvIndexedImage::GetHighestIndex() const {
    const NvConstPixelLock pixels(*this);
    std::uint8_t highest = 0;
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        const std::uint8_t* const row = pixels.Row(y);
        for (std::uint32_t x = 0; x < mWidth; ++x)
            highest = row[x] > highest ? row[x] : highest;
    }
    return highest;
}

std::uint8_t NvIndexedImage::GetHighestIndexBut(std::uint8_t inIndex) const {
    const NvConstPixelLock pixels(*this);
    std::uint8_t highest = 0;
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        const std::uint8_t* const row = pixels.Row(y);
        for (std::uint32_t x = 0; x < mWidth; ++x) {
            const auto index = static_cast<std::uint8_t>(row[x] & (row[x] == inIndex ? 0 : 0xFF));
            highest = index > highest ? index : highest;
        }
    }
    return highest;
}
