#include "nvcode2/nvindexedimage.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

#include "nvcode2/nvallocate.h"
#include "nvcode2/nvbitmapimage.h"
#include "nvcode2/nvbytes.h"
#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvindexcounter.h"
#include "nvcode2/nvmakeinvcolormap.h"
#include "nvcode2/nvmaskrow.h"
#include "nvcode2/nvresize.h"

namespace {

using IndexMap = std::array<std::uint8_t, 256>;
using Histogram = std::array<std::uint32_t, 256>;

IndexMap IdentityMap() {
    IndexMap map;
    std::iota(map.begin(), map.end(), std::uint8_t{0});
    return map;
}

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
    auto image = NvMakeUnique<NvIndexedImage>();
    image->CopyFrom(*this);
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
    auto image = NvMakeUnique<NvIndexedImage>(static_cast<std::uint32_t>(inRect.Width()),
                                              static_cast<std::uint32_t>(inRect.Height()), mColorTable);
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
    IndexMap map;
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
    auto image = NvMakeUnique<NvIndexedImage>(inWidth, inHeight, mColorTable);
    const NvConstPixelLock source(*this);
    const NvPixelLock dest(*image);
    NvResizeIndexed(source.Row(0), dest.Row(0), GetRowBytes(), image->GetRowBytes(), mWidth, mHeight, inWidth,
                    inHeight, &mColorTable, inverseMap.get(), inIndicator);
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

void NvIndexedImage::BuildHistogram(std::uint32_t* outHistogram) const {
    if (!outHistogram)
        NvThrow(NvErrorCode::km_MissingData);
    if (mWidth == 0 || mHeight == 0 || GetRowBytes() == 0 || IsLocked())
        NvThrow(NvErrorCode::km_BadParameter);
    const NvConstPixelLock pixels(*this);
    NvIndexCounter counter;
    for (std::uint32_t y = 0; y < mHeight; ++y)
        counter.AddRun(pixels.Row(y), mWidth);
    counter.Write(outHistogram, mColorTable.GetSize());
}

void NvIndexedImage::BuildMaskedHistogram(std::uint32_t* outHistogram, const NvBitmapImage* inMask) const {
    if (!outHistogram || !inMask)
        NvThrow(NvErrorCode::km_MissingData);
    const std::uint32_t width = mWidth;
    const std::uint32_t height = mHeight;
    const std::uint32_t ourRowBytes = GetRowBytes();
    const std::uint32_t maskRowBytes = inMask->GetRowBytes();
    NvAssert(width && height && ourRowBytes && maskRowBytes);
    NvAssert(!IsLocked() && !inMask->IsLocked());
    NvAssert(width == inMask->GetWidth() && height == inMask->GetHeight());

    const NvConstPixelLock pixels(*this);
    const NvConstPixelLock mask(*inMask);
    const bool setBit = inMask->GetPolarity() == 0;
    NvIndexCounter counter;
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint8_t* const row = pixels.Row(y);
        NvForEachRun(mask.Row(y), width, setBit, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            counter.AddRun(row + inFirst, inEnd - inFirst);
        });
    }
    counter.Write(outHistogram, mColorTable.GetSize());
}

std::uint32_t NvIndexedImage::CountUsedColors(const std::uint32_t* inHistogram, std::uint32_t inHistSize) {
    if (!inHistogram)
        NvThrow(NvErrorCode::km_MissingData);
    NvAssert(inHistSize);
    return inHistSize -
           static_cast<std::uint32_t>(std::count(inHistogram, inHistogram + inHistSize, std::uint32_t{0}));
}

std::uint32_t NvIndexedImage::FindUnusedColor(const std::uint32_t* inHistogram, std::uint32_t inHistSize,
                                              bool& outFound) {
    if (!inHistogram)
        NvThrow(NvErrorCode::km_MissingData);
    const auto* const unused = std::find(inHistogram, inHistogram + inHistSize, std::uint32_t{0});
    const auto index = static_cast<std::uint32_t>(unused - inHistogram);
    outFound = index < inHistSize;
    return index;
}

std::uint32_t NvIndexedImage::ChooseColorToMerge(std::uint32_t* ioHistogram, std::uint32_t inCandidates,
                                                 std::uint32_t& outSrcIndex,
                                                 std::uint32_t& outDstIndex) const {
    if (!ioHistogram)
        NvThrow(NvErrorCode::km_MissingData);
    NvAssert(inCandidates);
    const std::uint32_t sizeOfTable = mColorTable.GetSize();
    float bestCost = std::numeric_limits<float>::infinity();
    for (std::uint32_t k = std::min(inCandidates, sizeOfTable); k > 0; --k) {
        std::uint32_t* const least = std::min_element(ioHistogram, ioHistogram + sizeOfTable);
        const auto index = static_cast<std::uint32_t>(least - ioHistogram);
        const std::uint32_t count = std::exchange(*least, 0x7FFFFFFFu);
        const std::uint32_t nearest = mColorTable.FindClosestOtherColor(index);
        const std::uint32_t distance =
            NvColorTable::ColorDistance(&mColorTable.GetColor(index), &mColorTable.GetColor(nearest));
        const float cost = static_cast<float>(count) * static_cast<float>(distance);
        if (cost < bestCost) {
            bestCost = cost;
            outSrcIndex = index;
            outDstIndex = nearest;
        }
    }
    return outDstIndex;
}

void NvIndexedImage::ReplaceIndex(std::uint32_t inSrcIndex, std::uint32_t inDstIndex) {
    const std::uint32_t sizeOfTable = mColorTable.GetSize();
    NvAssert(inSrcIndex != inDstIndex);
    NvAssert(inSrcIndex < sizeOfTable && inDstIndex < sizeOfTable);
    IndexMap map = IdentityMap();
    map[inSrcIndex] = static_cast<std::uint8_t>(inDstIndex);
    RemapIndices(map.data());
}

void NvIndexedImage::RemapIndices(const std::uint8_t* inMap) {
    if (!inMap)
        NvThrow(NvErrorCode::km_MissingData);
    const NvPixelLock pixels(*this);
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        std::uint8_t* const row = pixels.Row(y);
        std::transform(row, row + mWidth, row, [inMap](std::uint8_t inIndex) { return inMap[inIndex]; });
    }
}

NvColorTable NvIndexedImage::CompactTable(const std::uint32_t* inHistogram, std::uint8_t* outMap) const {
    if (!inHistogram || !outMap)
        NvThrow(NvErrorCode::km_MissingData);
    const std::uint32_t inHistSize = mColorTable.GetSize();
    NvAssert(inHistSize);
    NvAssert(inHistSize <= 256);
    const NvColor* const colors = mColorTable.GetColors();
    Histogram counts{};
    std::copy_n(inHistogram, inHistSize, counts.begin());

    std::uint32_t removed = 0;
    for (std::uint32_t i = 0; i < inHistSize; ++i) {
        const auto first = static_cast<std::uint32_t>(std::find(colors, colors + i, colors[i]) - colors);
        if (first < i) {
            outMap[i] = outMap[first];
            counts[first] += std::exchange(counts[i], 0u);
            ++removed;
        } else {
            outMap[i] = static_cast<std::uint8_t>(i - removed);
            if (counts[i] == 0)
                ++removed;
        }
    }

    const std::uint32_t newSize = CountUsedColors(counts.data(), inHistSize);
    NvColorTable table(newSize);
    for (std::uint32_t i = 0; i < inHistSize; ++i) {
        if (counts[i] != 0) {
            const std::uint32_t j = outMap[i];
            NvAssertText(j < newSize, "j<newSize");
            table.SetColor(j, colors[i]);
        }
    }
    return table;
}

void NvIndexedImage::RemoveUnusedColors() {
    Histogram counts{};
    BuildHistogram(counts.data());
    // The pixels of a repeated colour count for its first occurrence, so that no number is given out twice.
    const NvColor* const colors = mColorTable.GetColors();
    for (std::uint32_t i = 0; i < mColorTable.GetSize(); ++i) {
        const auto first = std::find(colors, colors + i, colors[i]) - colors;
        counts[static_cast<std::size_t>(first)] += std::exchange(counts[i], 0u);
    }
    IndexMap map{};
    NvColorTable table = CompactTable(counts.data(), map.data());
    RemapIndices(map.data());
    mColorTable = std::move(table);
}

void NvIndexedImage::MergeSimilarColors(std::uint32_t inTolerance) {
    RemoveUnusedColors();
    const std::uint32_t tableSize = mColorTable.GetSize();
    NvAssert(tableSize > 0);
    NvColorTable kept(256);
    std::uint32_t keptSize = 0;
    IndexMap map{};
    for (std::uint32_t i = 0; i < tableSize; ++i) {
        const NvColor color = mColorTable.GetColor(i);
        const auto isNear = [&](const NvColor& inKept) {
            return NvColorTable::ColorDistance(&inKept, &color) < inTolerance * inTolerance;
        };
        const NvColor* const colors = kept.GetColors();
        const auto group =
            static_cast<std::uint32_t>(std::find_if(colors, colors + keptSize, isNear) - colors);
        if (group == keptSize)
            kept.SetColor(keptSize++, color);
        map[i] = static_cast<std::uint8_t>(group);
    }
    kept.SetSize(keptSize);
    RemapIndices(map.data());
    mColorTable = std::move(kept);
}
