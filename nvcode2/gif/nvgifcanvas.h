#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <variant>
#include <vector>

#include "nvcode2/base/nvgeometry.h"
#include "nvcode2/image/nvcolortable.h"

/** What an animation displays.
 *
 *  Colours are numbered in the order in which they appear, and a pixel is its colour's number: in one byte
 * while there are at most 256 of them, transparent included, in two up to 65,536. With more, pixels are the
 * colours themselves. */
class NvGIFCanvas {
public:
    /** NvPackColor with the top byte 255 when covered; 0 when transparent. */
    using Pixel = std::uint32_t;
    static constexpr Pixel km_Covered = 0xFF000000U;

    /** Columns of a row, the last one excluded. */
    struct Columns {
        std::uint32_t mFirst = 0;
        std::uint32_t mEnd = 0;

        bool IsEmpty() const { return mFirst >= mEnd; }
        void Add(const Columns& inColumns);
    };

    /** A transparent canvas. Its pixels take no memory before UseColours. */
    NvGIFCanvas(std::uint32_t inWidth, std::uint32_t inHeight) : mWidth(inWidth), mHeight(inHeight) {}

    std::uint32_t GetWidth() const { return mWidth; }
    std::uint32_t GetHeight() const { return mHeight; }

    static constexpr std::uint32_t km_DrawsAll = UINT32_MAX;

    /** Sets what indices stand for from now on; those beyond the table are black.
     *  @param inPassedOver   the index that draws nothing, or km_DrawsAll
     *  @throws std::bad_alloc */
    void UseColours(const NvColorTable& inTable, std::uint32_t inPassedOver);

    /** Draws part of a row. UseColours comes first.
     *  @return  the columns that look different now, or a few more */
    Columns Draw(std::uint32_t inX, std::uint32_t inY, const std::uint8_t* inIndices, std::uint32_t inCount);

    /** Makes a rectangle transparent. */
    void Clear(const NvRect& inRect);

    /** Keeps what a rectangle shows, for Restore to put back. @throws std::bad_alloc */
    void Save(const NvRect& inRect);
    void Restore(const NvRect& inRect);

    /** The colours that have a number, by number. */
    const std::vector<Pixel>& GetColours() const { return mColours; }

    /** Copies part of a row, each pixel as the value of its colour.
     *  @param inByNumber  the value of each of GetColours
     *  @param inValueOf   gives the value of any colour */
    template <typename Value, typename ValueOf>
    void Read(std::uint32_t inY, const Columns& inColumns, const std::vector<Value>& inByNumber,
              const ValueOf& inValueOf, Value* outValues) const;

private:
    static constexpr std::size_t km_Indices = 256;

    using Bytes = std::vector<std::uint8_t>;
    using Words = std::vector<std::uint16_t>;
    using Colours = std::vector<Pixel>;
    using Pixels = std::variant<Bytes, Words, Colours>; // row-major

    static constexpr std::size_t km_MostInBytes = 256;
    static constexpr std::size_t km_MostInWords = 65536;

    std::uint32_t NumberOf(Pixel inColour);
    std::size_t SlotOf(Pixel inColour) const;
    void Widen();
    std::size_t PlaceOf(std::int32_t inX, std::int32_t inY) const {
        return static_cast<std::size_t>(inY) * mWidth + static_cast<std::size_t>(inX);
    }

    std::uint32_t mWidth;
    std::uint32_t mHeight;
    Pixels mPixels;
    Pixels mSaved;                     // of the same kind
    std::vector<Pixel> mColours{0};    // by number
    std::vector<std::uint32_t> mSlots; // a hash table of the numbers, 0: free

    // Of the indices in use.
    std::array<std::uint32_t, km_Indices> mNumbers{}; // or colours; 0: draws nothing
    std::uint32_t mPassedOver = km_DrawsAll;
};

template <typename Value, typename ValueOf>
void NvGIFCanvas::Read(std::uint32_t inY, const Columns& inColumns, const std::vector<Value>& inByNumber,
                       const ValueOf& inValueOf, Value* outValues) const {
    const std::size_t count = inColumns.mEnd - inColumns.mFirst;
    const Value* values = inByNumber.data();
    std::visit(
        [&](const auto& inPixels) {
            if (inPixels.empty()) {
                std::fill_n(outValues, count, values[0]);
                return;
            }
            const auto* row = inPixels.data() + std::size_t{inY} * mWidth + inColumns.mFirst;
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(inPixels)>, Colours>) {
                std::transform(row, row + count, outValues, inValueOf);
                return;
            }
            std::size_t i = 0;
            for (; i + 4 <= count; i += 4) { // loads of the next pixels need not wait for stores
                const Value four[] = {values[row[i]], values[row[i + 1]], values[row[i + 2]],
                                      values[row[i + 3]]};
                std::copy_n(four, 4, outValues + i);
            }
            for (; i < count; ++i)
                outValues[i] = values[row[i]];
        },
        mPixels);
}
