#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "nvcode2/gif/nvlzwstringtable.h"
#include "win/optimizer/codes/pvpixelchoices.h"

/** The strings that LZW has codes for, to be followed through a stream of choices.
 *
 *  At each position it follows all strings that the choices allow at once, up to a limit. */
class PvChoiceStrings {
public:
    static constexpr std::uint32_t km_MaxCodes = NvLZWStringTable::km_MaxCodes;

    /** A string of the table that the choices allow. */
    struct Found {
        std::uint32_t mLength = 0; ///< pixels
        std::uint32_t mCode = 0;
    };

    /** @param ioStrings  scratch space while a stream is in hand; borrowed for the object's life */
    explicit PvChoiceStrings(NvLZWStringTable& ioStrings) : mTable(ioStrings) {}

    /** Begins a stream with an empty table.
     *  @param inChoices  at least one pixel; borrowed until the next call */
    void Begin(const PvPixelChoices& inChoices);

    void Clear();
    bool IsFull() const { return mNextCode == km_MaxCodes; }
    std::uint32_t GetNextCode() const { return mNextCode; }
    bool Has(std::uint32_t inPrefix, std::uint8_t inPixel) const {
        return mTable.Find(inPrefix, inPixel) != 0;
    }

    /** Adds a string that is not in the table, which is not full. */
    void Add(std::uint32_t inPrefix, std::uint8_t inPixel) {
        Node& node = mNodes[inPrefix];
        if (node.mFirstChild == 0)
            node = {static_cast<std::uint16_t>(mNextCode), inPixel, 0};
        else
            ++node.mOthers;
        mTable.Add(inPrefix, inPixel, mNextCode++);
    }

    /** Spends a code on a string that is in the table already. */
    void AddAgain() { ++mNextCode; }

    /** Takes back the last Add. */
    void RemoveLast(std::uint32_t inPrefix) {
        Node& node = mNodes[inPrefix];
        if (node.mFirstChild == --mNextCode)
            node = Node();
        else
            --node.mOthers;
        mTable.RemoveLast();
    }

    /** Follows every string that starts with one of two pixels.
     *  @return  the longest; of equally long ones the one whose choices were the present pixels for longer */
    Found Explore(std::uint32_t inStart, std::uint8_t inFirst, std::uint8_t inSecond) const;

private:
    // More gain hardly anything; only two cost half a percent.
    static constexpr std::uint32_t km_StringsFollowed = 8;

    /** The strings that are one pixel longer than a string. Nearly all strings have one such child or none,
     * and this answers for them without a look at the large table. It takes four bytes, so that following a
     * child is a single load. Strings are taken back in reverse order, so the first child stays while any
     * does. */
    struct Node {
        std::uint16_t mFirstChild = 0; // its code, 0: none
        std::uint8_t mFirstPixel = 0;
        std::uint8_t mOthers = 0; // children besides it
    };

    /** Codes of the strings followed at one place; the last one extended may become two. */
    using Strings = std::array<std::uint32_t, km_StringsFollowed + 1>;

    std::uint32_t FollowOne(Strings& ioStrings, std::uint32_t& ioPlace) const;
    std::uint32_t Extend(const Strings& inStrings, std::uint32_t inCount, std::uint32_t inPlace,
                         Strings& outLonger) const;

    const std::uint8_t* mPresent = nullptr;
    const std::uint8_t* mOther = nullptr;
    std::uint32_t mCount = 0;
    NvLZWStringTable& mTable;
    std::uint32_t mFirstFreeCode = 0;
    std::uint32_t mNextCode = 0;
    std::array<Node, km_MaxCodes> mNodes{};
};

/** Where each string was settled first, to settle it again. */
class PvStringPlaces {
public:
    void SetPlace(std::uint32_t inCode, std::uint32_t inPlace) { mPlaces[inCode] = inPlace; }

    /** Writes a string's pixels: they stand where it was added to the table, one pixel of which may be the
     *  first of these and is written already. */
    void Settle(const PvChoiceStrings::Found& inString, std::uint32_t inStart, std::uint8_t* ioPixels) const {
        if (inString.mLength == 1)
            ioPixels[inStart] = static_cast<std::uint8_t>(inString.mCode);
        else
            std::memmove(ioPixels + inStart, ioPixels + mPlaces[inString.mCode], inString.mLength);
    }

private:
    std::array<std::uint32_t, PvChoiceStrings::km_MaxCodes> mPlaces{};
};
