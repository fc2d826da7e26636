#include "nvcode2/image/nvcolortable.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <utility>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nverrorcode.h"

NvColorTable::NvColorTable(std::uint32_t inSize) : mTable(NvMakeArray<NvColor>(inSize)), mTableSize(inSize) {}

NvColorTable::NvColorTable(const NvColorTable& inTable) : NvColorTable(inTable.mTableSize) {
    std::copy_n(inTable.mTable.get(), mTableSize, mTable.get());
}

NvColorTable& NvColorTable::operator=(const NvColorTable& inTable) {
    if (this != &inTable)
        *this = NvColorTable(inTable);
    return *this;
}

NvColorTable::NvColorTable(NvColorTable&& ioTable) noexcept
    : mTable(std::move(ioTable.mTable)), mTableSize(std::exchange(ioTable.mTableSize, 0)) {}

NvColorTable& NvColorTable::operator=(NvColorTable&& ioTable) noexcept {
    NvColorTable moved(std::move(ioTable));
    std::swap(mTable, moved.mTable);
    std::swap(mTableSize, moved.mTableSize);
    return *this;
}

bool NvColorTable::operator==(const NvColorTable& inTable) const {
    return std::ranges::equal(std::span(mTable.get(), mTableSize),
                              std::span(inTable.mTable.get(), inTable.mTableSize));
}

void NvColorTable::Clear() {
    mTable.reset();
    mTableSize = 0;
}

void NvColorTable::SetSize(std::uint32_t inSize) {
    if (inSize == mTableSize)
        return;
    auto table = NvMakeArray<NvColor>(inSize);
    std::copy_n(mTable.get(), std::min(mTableSize, inSize), table.get());
    mTable = std::move(table);
    mTableSize = inSize;
}

std::uint32_t NvColorTable::FindClosestColor(std::uint32_t inColor, std::int32_t inSkipIndex) const {
    if (!mTable)
        NvThrow(NvErrorCode::km_MissingData);
    const NvColor color = NvUnpackColor(inColor);
    std::uint32_t best = inSkipIndex == 0 ? 1 : 0;
    if (best >= mTableSize)
        return best;

    // A negative skip index converts to a number that no entry has.
    const auto skip = static_cast<std::uint32_t>(inSkipIndex);
    std::uint32_t bestDistance = ColorDistance(&color, &mTable[best]);
    for (std::uint32_t i = best + 1; i < mTableSize && bestDistance != 0; ++i) {
        const std::uint32_t distance = ColorDistance(&color, &mTable[i]);
        if (distance < bestDistance && i != skip) {
            best = i;
            bestDistance = distance;
        }
    }
    return best;
}

std::uint32_t NvColorTable::FindClosestOtherColor(std::uint32_t inIndex) const {
    if (!mTable)
        NvThrow(NvErrorCode::km_MissingData);
    NvAssert(inIndex < mTableSize && mTableSize >= 2);
    return FindClosestColor(NvPackColor(mTable[inIndex]), static_cast<std::int32_t>(inIndex));
}

std::uint32_t NvColorTable::GetBitsNeeded(std::uint32_t inSize) {
    std::uint32_t bits = 1;
    while (bits < 8 && inSize > 1u << bits)
        ++bits;
    return bits;
}

NvColorTable NvColorTable::RemoveDuplicates() const {
    return RemoveDuplicatesWithMap(nullptr);
}

NvColorTable NvColorTable::RemoveDuplicatesWithMap(std::uint8_t* outMap) const {
    NvColorTable result(mTableSize);
    NvColor* const kept = result.mTable.get();
    std::uint32_t keptSize = 0;
    for (std::uint32_t i = 0; i < mTableSize; ++i) {
        const auto index = static_cast<std::uint32_t>(std::find(kept, kept + keptSize, mTable[i]) - kept);
        if (index == keptSize)
            kept[keptSize++] = mTable[i];
        if (outMap)
            outMap[i] = static_cast<std::uint8_t>(index);
    }
    result.SetSize(keptSize);
    return result;
}

NvColorTable NvColorTable::MergeTables(const NvColorTable* inTablePtr, std::uint32_t inMaxSize) const {
    NvAssert(inTablePtr);
    NvAssert(inMaxSize >= mTableSize);
    NvColorTable both(*this);
    both.SetSize(mTableSize + inTablePtr->mTableSize);
    std::copy_n(inTablePtr->mTable.get(), inTablePtr->mTableSize, both.mTable.get() + mTableSize);
    NvColorTable result = both.RemoveDuplicates();
    if (result.mTableSize > inMaxSize)
        result.SetSize(inMaxSize);
    return result;
}

NvColorTable NvColorTable::SortByHistogram(const std::int32_t* inHistPtr) const {
    NvAssert(inHistPtr);
    NvColorTable result(*this);
    const auto weight = [inHistPtr](NvColor inColor) {
        return inHistPtr[(inColor.red >> 4) * 256 + (inColor.green >> 4) * 16 + (inColor.blue >> 4)];
    };
    std::ranges::stable_sort(std::span(result.mTable.get(), mTableSize), std::greater{}, weight);
    return result;
}

void NvColorTable::MakeGrayRamp(std::uint8_t inDirection) {
    SetSize(256);
    NvColor* const tablePtr = mTable.get();
    NvAssert(tablePtr);
    NvAssertText(inDirection == 0 || inDirection == 0xFF, "0");
    for (std::uint32_t i = 0; i < 256; ++i) {
        const auto level = static_cast<std::uint8_t>(i ^ inDirection);
        tablePtr[i] = {level, level, level};
    }
}

void NvColorTable::MakeWebPalette(bool inPadTo256) {
    SetSize(inPadTo256 ? 256 : 216);
    const auto level = [](std::uint32_t inStep) { return static_cast<std::uint8_t>(inStep % 6 * 51); };
    for (std::uint32_t i = 0; i < 216; ++i)
        mTable[i] = {level(i / 36), level(i / 6), level(i)};
    std::fill(mTable.get() + 216, mTable.get() + mTableSize, NvColor{255, 255, 255});
}

void NvColorTable::MakeSystemPalette() {
    MakeWebPalette(true);
    std::reverse(mTable.get(), mTable.get() + 216);
    constexpr std::array<std::uint8_t, 10> km_Ramp{0xEE, 0xDD, 0xBB, 0xAA, 0x88,
                                                   0x77, 0x55, 0x44, 0x22, 0x11};
    NvColor* next = mTable.get() + 215; // over the cube's black, which comes last here
    for (const std::uint8_t level : km_Ramp)
        *next++ = {level, 0, 0};
    for (const std::uint8_t level : km_Ramp)
        *next++ = {0, level, 0};
    for (const std::uint8_t level : km_Ramp)
        *next++ = {0, 0, level};
    for (const std::uint8_t level : km_Ramp)
        *next++ = {level, level, level};
    *next = {0, 0, 0};
}
