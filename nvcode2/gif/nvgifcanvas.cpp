#include "nvcode2/gif/nvgifcanvas.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>
#include <utility>

#include "nvcode2/base/nvbytes.h"

namespace {

/** Draws pixels, except those whose number is 0. @return whether any is different now */
template <typename Number>
bool DrawPixels(const std::uint8_t* inIndices, std::uint32_t inCount, const std::uint32_t* inNumbers,
                Number* ioPixels) {
    std::uint32_t difference = 0;
    for (std::uint32_t i = 0; i < inCount; ++i) {
        const std::uint32_t number = inNumbers[inIndices[i]];
        const std::uint32_t pixel = number != 0 ? number : ioPixels[i];
        difference |= pixel ^ ioPixels[i];
        ioPixels[i] = static_cast<Number>(pixel);
    }
    return difference != 0;
}

/** Draws eight pixels of one colour. @return whether any is different now */
template <typename Number>
bool DrawEightAlike(std::uint32_t inNumber, Number* ioPixels) {
    std::array<Number, 8> eight;
    eight.fill(static_cast<Number>(inNumber));
    const bool isDifferent = std::memcmp(ioPixels, eight.data(), sizeof eight) != 0;
    if (isDifferent)
        std::memcpy(ioPixels, eight.data(), sizeof eight);
    return isDifferent;
}

/** Draws a row, eight pixels at a time.
 *  @param inPassedOver  the index whose number is 0, or km_DrawsAll
 *  @return              the columns that are different now, or a few more */
template <typename Number>
NvGIFCanvas::Columns DrawRow(const std::uint8_t* inIndices, std::uint32_t inWidth,
                             const std::uint32_t* inNumbers, std::uint32_t inPassedOver, Number* ioRow) {
    const bool passesOver = inPassedOver != NvGIFCanvas::km_DrawsAll;
    const std::uint64_t eightPassedOver = NvEightOf(static_cast<std::uint8_t>(inPassedOver));
    NvGIFCanvas::Columns changed;
    std::uint32_t x = 0;
    for (; x + 8 <= inWidth; x += 8) {
        const std::uint64_t eight = NvLoadLittleEndian(inIndices + x);
        if (passesOver && eight == eightPassedOver)
            continue;
        const bool areAlike = eight == NvEightOf(inIndices[x]);
        if (areAlike ? DrawEightAlike(inNumbers[inIndices[x]], ioRow + x)
                     : DrawPixels(inIndices + x, 8, inNumbers, ioRow + x))
            changed.Add({x, x + 8});
    }
    if (DrawPixels(inIndices + x, inWidth - x, inNumbers, ioRow + x))
        changed.Add({x, inWidth});
    return changed;
}

} // namespace

void NvGIFCanvas::Columns::Add(const Columns& inColumns) {
    if (inColumns.IsEmpty())
        return;
    const bool wasEmpty = IsEmpty();
    mFirst = wasEmpty ? inColumns.mFirst : std::min(mFirst, inColumns.mFirst);
    mEnd = wasEmpty ? inColumns.mEnd : std::max(mEnd, inColumns.mEnd);
}

void NvGIFCanvas::UseColours(const NvColorTable& inTable, std::uint32_t inPassedOver) {
    const std::size_t size = std::min<std::size_t>(inTable.GetSize(), km_Indices);
    const auto useNumbers = [&](const auto& inNumberOf) {
        if (size < km_Indices)
            mNumbers.fill(inNumberOf(km_Covered));
        for (std::size_t i = 0; i < size; ++i)
            if (i != inPassedOver)
                mNumbers[i] = inNumberOf(NvPackColor(inTable.GetColors()[i]) | km_Covered);
    };
    if (!std::holds_alternative<Colours>(mPixels)) {
        useNumbers([this](Pixel inColour) { return NumberOf(inColour); });
        Widen();
    }
    if (std::holds_alternative<Colours>(mPixels))
        useNumbers([](Pixel inColour) { return inColour; });
    if (inPassedOver < km_Indices)
        mNumbers[inPassedOver] = 0;
    mPassedOver = inPassedOver;
    std::visit([this](auto& ioPixels) { ioPixels.resize(std::size_t{mWidth} * mHeight); }, mPixels);
}

std::uint32_t NvGIFCanvas::NumberOf(Pixel inColour) {
    if (2 * mColours.size() >= mSlots.size()) {
        mSlots.assign(4 * std::bit_ceil(mColours.size()), 0);
        for (std::uint32_t number = 1; number < mColours.size(); ++number)
            mSlots[SlotOf(mColours[number])] = number;
    }
    std::uint32_t& number = mSlots[SlotOf(inColour)];
    if (number == 0) {
        number = static_cast<std::uint32_t>(mColours.size());
        mColours.push_back(inColour);
    }
    return number;
}

/** The slot of a colour's number, or the free one where it belongs. Hashed by multiplying with the golden
 * ratio, after D. E. Knuth, "The Art of Computer Programming", volume 3, 6.4. */
std::size_t NvGIFCanvas::SlotOf(Pixel inColour) const {
    const std::size_t mask = mSlots.size() - 1;
    std::size_t slot = (inColour * 0x9E3779B1U >> 12) & mask;
    while (mSlots[slot] != 0 && mColours[mSlots[slot]] != inColour)
        slot = (slot + 1) & mask;
    return slot;
}

/** Gives pixels as many bytes as the number of colours takes. */
void NvGIFCanvas::Widen() {
    const auto convert = [this]<typename Wide>(const Wide&, const auto& inConvert) {
        if (std::holds_alternative<Wide>(mPixels))
            return;
        for (Pixels* pixels : {&mPixels, &mSaved})
            *pixels = std::visit(
                [&](const auto& inNarrow) {
                    Wide wide(inNarrow.size());
                    std::transform(inNarrow.begin(), inNarrow.end(), wide.begin(), inConvert);
                    return wide;
                },
                *pixels);
    };
    if (mColours.size() > km_MostInWords)
        convert(Colours(), [this](std::size_t inNumber) { return mColours[inNumber]; });
    else if (mColours.size() > km_MostInBytes)
        convert(Words(), [](std::size_t inNumber) { return static_cast<std::uint16_t>(inNumber); });
}

NvGIFCanvas::Columns NvGIFCanvas::Draw(std::uint32_t inX, std::uint32_t inY, const std::uint8_t* inIndices,
                                       std::uint32_t inCount) {
    Columns changed = std::visit(
        [&](auto& ioPixels) {
            return DrawRow(inIndices, inCount, mNumbers.data(), mPassedOver,
                           ioPixels.data() + std::size_t{inY} * mWidth + inX);
        },
        mPixels);
    if (!changed.IsEmpty())
        changed = {inX + changed.mFirst, inX + changed.mEnd};
    return changed;
}

void NvGIFCanvas::Clear(const NvRect& inRect) {
    std::visit(
        [&](auto& ioPixels) {
            for (std::int32_t y = inRect.top; y < inRect.bottom; ++y)
                std::fill_n(ioPixels.data() + PlaceOf(inRect.left, y), inRect.Width(), 0);
        },
        mPixels);
}

void NvGIFCanvas::Save(const NvRect& inRect) {
    std::visit(
        [&](const auto& inPixels) {
            auto& saved = std::get<std::remove_cvref_t<decltype(inPixels)>>(mSaved);
            saved.clear();
            for (std::int32_t y = inRect.top; y < inRect.bottom; ++y) {
                const auto* row = inPixels.data() + PlaceOf(inRect.left, y);
                saved.insert(saved.end(), row, row + inRect.Width());
            }
        },
        mPixels);
}

void NvGIFCanvas::Restore(const NvRect& inRect) {
    std::visit(
        [&](auto& ioPixels) {
            const auto* saved = std::get<std::remove_reference_t<decltype(ioPixels)>>(mSaved).data();
            for (std::int32_t y = inRect.top; y < inRect.bottom; ++y, saved += inRect.Width())
                std::copy_n(saved, inRect.Width(), ioPixels.data() + PlaceOf(inRect.left, y));
        },
        mPixels);
}
