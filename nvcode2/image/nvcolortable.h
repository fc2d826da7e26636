#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "nvcode2/base/nvassert.h"

/** One palette entry, 8 bits per channel: three bytes in files and in memory. */
struct NvColor {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const NvColor&) const = default;
};
static_assert(sizeof(NvColor) == 3, "tables are copied to and from files byte for byte");

/** The colour in one word: red in bits 0-7, green in 8-15, blue in 16-23. */
constexpr std::uint32_t NvPackColor(NvColor inColor) {
    return inColor.red | static_cast<std::uint32_t>(inColor.green) << 8 |
           static_cast<std::uint32_t>(inColor.blue) << 16;
}

/** The luma of a packed colour, 0 to 255, with the weights of ITU-R BT.601. */
constexpr std::uint8_t NvLumaOf(std::uint32_t inColor) {
    return static_cast<std::uint8_t>(
        (77 * (inColor & 0xFF) + 150 * ((inColor >> 8) & 0xFF) + 29 * ((inColor >> 16) & 0xFF) + 128) >> 8);
}

/** The colour in such a word; the top byte does not matter. */
constexpr NvColor NvUnpackColor(std::uint32_t inColor) {
    return {static_cast<std::uint8_t>(inColor), static_cast<std::uint8_t>(inColor >> 8),
            static_cast<std::uint8_t>(inColor >> 16)};
}

/** A palette: an ordered, resizable array of colours. Pixel value i selects entry i, so a caller that
 * reorders entries rewrites pixels.
 *
 *  A value type: copying copies all entries. Whatever allocates raises code 2 when memory is out, and then
 *  leaves this table as it was. Images use at most 256 entries; the table itself has no limit. */
class NvColorTable {
public:
    NvColorTable() = default;
    /** inSize black entries. */
    explicit NvColorTable(std::uint32_t inSize);
    NvColorTable(const NvColorTable& inTable);
    NvColorTable& operator=(const NvColorTable& inTable);
    NvColorTable(NvColorTable&& ioTable) noexcept;
    NvColorTable& operator=(NvColorTable&& ioTable) noexcept;
    ~NvColorTable() = default;

    bool operator==(const NvColorTable& inTable) const;

    std::uint32_t GetSize() const { return mTableSize; }
    /** All entries, consecutive; null when the table is empty. Valid until the size changes. */
    NvColor* GetColors() { return mTable.get(); }
    const NvColor* GetColors() const { return mTable.get(); }

    /** Precondition: inIndex < GetSize(). */
    const NvColor& GetColor(std::uint32_t inIndex) const {
        NvAssert(inIndex < mTableSize && mTable);
        return mTable[inIndex];
    }
    /** Precondition: inIndex < GetSize(). */
    void SetColor(std::uint32_t inIndex, NvColor inColor) {
        NvAssert(inIndex < mTableSize && mTable);
        mTable[inIndex] = inColor;
    }

    void Clear();
    /** Keeps the leading entries. Entries gained have no promised colour: the caller fills them. */
    void SetSize(std::uint32_t inSize);

    /** Squared distance in RGB, 0 to 195075. Preconditions: both non-null. */
    static std::uint32_t ColorDistance(const NvColor* inColor1, const NvColor* inColor2) {
        NvAssert(inColor1);
        NvAssert(inColor2);
        const int red = inColor1->red - inColor2->red;
        const int green = inColor1->green - inColor2->green;
        const int blue = inColor1->blue - inColor2->blue;
        return static_cast<std::uint32_t>(red * red + green * green + blue * blue);
    }

    /** Index of the entry nearest to a packed colour; the lowest of equally near ones.
     *
     *  @param inColor      see NvPackColor
     *  @param inSkipIndex  an entry never returned, or negative for none. Skipping entry 0 of a table of one
     *                      leaves nothing to find: the result is then 1, which is no entry
     *  Raises 27 when the table is empty. */
    std::uint32_t FindClosestColor(std::uint32_t inColor, std::int32_t inSkipIndex) const;

    /** The entry nearest to entry inIndex among the others; at distance 0 when the colour is there twice.
     *  Raises 27 when the table is empty. Precondition: inIndex < GetSize() and GetSize() >= 2. */
    std::uint32_t FindClosestOtherColor(std::uint32_t inIndex) const;

    /** The GIF table size field plus one, 1 to 8: 2 to that power is the smallest table that holds inSize
     *  entries (up to 256). */
    static std::uint32_t GetBitsNeeded(std::uint32_t inSize);

    /** The first occurrence of every colour, in table order. */
    NvColorTable RemoveDuplicates() const;
    /** The same, and for every entry of this table where its colour went.
     *  @param outMap  GetSize() bytes, or null; new indices above 255 do not fit and are cut. */
    NvColorTable RemoveDuplicatesWithMap(std::uint8_t* outMap) const;

    /** This table, then the other's new colours in their order, each colour once, cut to inMaxSize
     *  entries. Preconditions: inTablePtr non-null, inMaxSize >= GetSize(). For joining palettes without
     *  looking at pixels; the optimizer makes its shared palette of them. */
    NvColorTable MergeTables(const NvColorTable* inTablePtr, std::uint32_t inMaxSize) const;

    /** The same entries by falling pixel count, the lower index first among equals.
     *
     *  @param inHistPtr  4096 counts, none negative; a colour's count is at its channels' top four bits,
     *                    red * 256 + green * 16 + blue. Precondition: non-null.
     *  For still images; the optimizer orders its palettes by the frames they serve. */
    NvColorTable SortByHistogram(const std::int32_t* inHistPtr) const;

    /** 256 greys, from black when inDirection is 0, from white when it is 0xFF; nothing else is allowed.
     *  For readers of grey pictures in formats that store no palette. */
    void MakeGrayRamp(std::uint8_t inDirection);
    /** The 216 colours with channel levels 0, 51, ... 255, blue varying fastest, from black to white; with
     *  inPadTo256 followed by 40 white entries.
     *  A neutral palette to convert true colour to; the program's own are made for each picture. */
    void MakeWebPalette(bool inPadTo256);
    /** The 256-colour desktop palette: the web cube from white down without its black, ten-step ramps of red,
     *  green, blue and grey, black last.
     *  For pictures that were stored without their palette. */
    void MakeSystemPalette();

private:
    std::unique_ptr<NvColor[]> mTable; // null exactly when mTableSize is 0
    std::uint32_t mTableSize = 0;      // entries
};
