// The colours of an indexed image: how often each is used, which could go, and tables with fewer of them.

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

#include "nvcode2/base/nvbytes.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/image/nvbitmapimage.h"
#include "nvcode2/image/nvindexedimage.h"
#include "nvcode2/image/nvmaskrow.h"

namespace {

/** Counts indices. Neighbouring pixels go to different sets of counts, so that none waits for the store of
 *  the one before; eight pixels of one colour, which is what most pictures are made of, are one addition. */
class IndexCounter {
public:
    /** A run of pixels. */
    void AddRun(const std::uint8_t* inIndices, std::size_t inCount) {
        std::size_t i = 0;
        for (; i + 8 <= inCount; i += 8) {
            const std::uint64_t eight = NvLoadLittleEndian(inIndices + i);
            if (eight == NvEightOf(inIndices[i]))
                mCounts[0][inIndices[i]] += 8;
            else
                AddEight(eight);
        }
        for (; i < inCount; ++i)
            ++mCounts[i % 4][inIndices[i]];
    }

    /** Writes a count for each of inSize table entries; those beyond 256 no pixel can have. */
    void Write(std::uint32_t* outHistogram, std::uint32_t inSize) const {
        for (std::size_t i = 0; i < inSize; ++i)
            outHistogram[i] = i < 256 ? mCounts[0][i] + mCounts[1][i] + mCounts[2][i] + mCounts[3][i] : 0;
    }

private:
    void AddEight(std::uint64_t inEight) {
        for (std::size_t i = 0; i < 8; ++i)
            ++mCounts[i % 4][inEight >> (8 * i) & 0xFF];
    }

    std::array<std::array<std::uint32_t, 256>, 4> mCounts{};
};

/** Raises 27 unless pixels can refer to every entry. */
void RequireReachable(const NvColorTable& inTable) {
    if (inTable.GetSize() > 256)
        NvThrow(NvErrorCode::km_MissingData);
}

} // namespace

void NvIndexedImage::BuildHistogram(std::uint32_t* outHistogram) const {
    if (!outHistogram)
        NvThrow(NvErrorCode::km_MissingData);
    if (mWidth == 0 || mHeight == 0 || GetRowBytes() == 0 || IsLocked())
        NvThrow(NvErrorCode::km_BadParameter);
    const NvConstPixelLock pixels(*this);
    IndexCounter counter;
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
    IndexCounter counter;
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
    const std::uint32_t sizeOfTable = mColorTable.GetSize();
    if (!ioHistogram || sizeOfTable == 0 || inCandidates == 0)
        NvThrow(NvErrorCode::km_MissingData);
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
    RequireReachable(mColorTable);
    NvIndexMap map;
    std::iota(map.begin(), map.end(), std::uint8_t{0});
    map[inSrcIndex] = static_cast<std::uint8_t>(inDstIndex);
    RemapIndices(map.data());
}

NvColorTable NvIndexedImage::CompactTable(const std::uint32_t* inHistogram, std::uint8_t* outMap) const {
    if (!inHistogram || !outMap)
        NvThrow(NvErrorCode::km_MissingData);
    const std::uint32_t inHistSize = mColorTable.GetSize();
    NvAssert(inHistSize);
    RequireReachable(mColorTable);
    const NvColor* const colors = mColorTable.GetColors();
    NvHistogram counts{};
    std::copy_n(inHistogram, inHistSize, counts.begin());

    std::uint32_t removed = 0;
    for (std::uint32_t i = 0; i < inHistSize; ++i) {
        const auto first = static_cast<std::uint32_t>(std::find(colors, colors + i, colors[i]) - colors);
        if (first < i) {
            outMap[i] = outMap[first];
            counts[first] += counts[i];
            counts[i] = 0;
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
    RequireReachable(mColorTable);
    NvHistogram counts{};
    BuildHistogram(counts.data());
    // The pixels of a repeated colour count for its first occurrence, so that no number is given out twice.
    const NvColor* const colors = mColorTable.GetColors();
    for (std::uint32_t i = 0; i < mColorTable.GetSize(); ++i) {
        const auto first = static_cast<std::size_t>(std::find(colors, colors + i, colors[i]) - colors);
        if (first < i) {
            counts[first] += counts[i];
            counts[i] = 0;
        }
    }
    NvIndexMap map{};
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
    NvIndexMap map{};
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
