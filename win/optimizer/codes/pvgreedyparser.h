#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "nvcode2/gif/nvlzwstringtable.h"

/** A frame's pixels in the order in which the file stores them, each with the index it may have instead. */
struct PvPixelChoices {
    std::vector<std::uint8_t> mPresent;
    std::vector<std::uint8_t> mOther; ///< as many; equal to mPresent where there is no choice
    std::uint32_t mPixelBits = 2;     ///< of the frame's codes
};

/** Parses a stream of choices into the longest strings that LZW has codes for, and settles each pixel on the
 *  way.
 *
 *  At each position it follows all strings that the choices allow at once, up to a limit. Where none goes on,
 *  it takes the longest, and settles the next pixel so that the string after it becomes long too. */
class PvGreedyParser {
public:
    /** @param ioStrings  scratch space while it parses; borrowed for the parser's life */
    explicit PvGreedyParser(NvLZWStringTable& ioStrings) : mTable(ioStrings) {}

    /** @param inChoices   at least one pixel
     *  @param inToBeat    codes at which to give up
     *  @param outPixels   the settled pixels, as many as the choices
     *  @return            the number of codes; the pixels are not all settled when that is inToBeat */
    std::uint64_t Parse(const PvPixelChoices& inChoices, std::uint64_t inToBeat,
                        std::vector<std::uint8_t>& outPixels);

private:
    // More gain hardly anything; only two cost half a percent.
    static constexpr std::uint32_t km_StringsFollowed = 8;

    /** A string of the table that the choices allow. */
    struct Found {
        std::uint32_t mLength = 0; // pixels
        std::uint32_t mCode = 0;
    };

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

    void Clear(std::uint32_t inFirstFreeCode);
    void Add(std::uint32_t inPrefix, std::uint8_t inPixel);
    void RemoveLast(std::uint32_t inPrefix);
    Found Explore(std::uint32_t inStart, std::uint8_t inFirst, std::uint8_t inSecond) const;
    std::uint32_t FollowOne(Strings& ioStrings, std::uint32_t& ioPlace) const;
    std::uint32_t Extend(const Strings& inStrings, std::uint32_t inCount, std::uint32_t inPlace,
                         Strings& outLonger) const;
    std::uint8_t ChooseNext(std::uint32_t inPrefix, std::uint32_t inPlace, Found& outNext);
    Found ExploreWith(std::uint32_t inPrefix, std::uint8_t inPixel, std::uint32_t inPlace);
    void Settle(const Found& inString, std::uint32_t inStart, std::uint8_t* ioPixels) const;

    const std::uint8_t* mPresent = nullptr;
    const std::uint8_t* mOther = nullptr;
    std::uint32_t mCount = 0;
    NvLZWStringTable& mTable;
    std::uint32_t mNextCode = 0;
    std::array<Node, NvLZWStringTable::km_MaxCodes> mNodes{};
    std::array<std::uint32_t, NvLZWStringTable::km_MaxCodes> mPlaces{}; // where each string was settled first
};
