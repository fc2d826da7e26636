#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "nvcode2/nvlzwstringtable.h"

/** A frame's pixels in the order in which the file stores them, each with what it may be instead. */
struct PvPixelChoices {
    std::vector<std::uint8_t> mPresent;
    std::vector<std::uint8_t> mOther; ///< as many; equal to mPresent where there is no choice
    std::uint32_t mPixelBits = 2;     ///< of the frame's codes
};

/** Parses a stream of choices into the longest strings that LZW has codes for, and settles each pixel on the
 * way.
 *
 *  At every place all strings that the choices allow are followed at once, up to a number. Where none goes
 * on, the longest is taken; the next pixel is settled so that the string after it becomes long too. */
class PvGreedyParser {
public:
    /** @param inChoices   at least one pixel
     *  @param inToBeat    codes at which to give up
     *  @param outPixels   the settled pixels, as many as the choices
     *  @return            the number of codes; the pixels are not all settled when that is inToBeat */
    std::uint64_t Parse(const PvPixelChoices& inChoices, std::uint64_t inToBeat,
                        std::vector<std::uint8_t>& outPixels);

private:
    // More find hardly anything; two alone lose half a percent.
    static constexpr std::uint32_t km_StringsFollowed = 8;

    /** How each string followed came to its pixel at one place: the number of the string before, and whether
     * the pixel is the other one. The last string extended may become two. */
    struct Origins {
        std::array<std::uint8_t, 2 * km_StringsFollowed> mOrigins;
    };

    /** All strings from one place, and the longest of them, which is number 0 in its last place. */
    struct Exploration {
        std::array<Origins, NvLZWStringTable::km_MaxCodes> mPlaces; // no string is longer
        std::array<std::uint8_t, 2> mFirstPixels{};
        std::uint32_t mLength = 0; // pixels
        std::uint32_t mCode = 0;   // of the longest
    };

    void Explore(std::uint32_t inStart, std::uint8_t inFirst, std::uint8_t inSecond,
                 Exploration& outFound) const;
    void ExploreWith(std::uint32_t inPrefix, std::uint8_t inPixel, std::uint32_t inPlace,
                     std::uint32_t inCode, Exploration& outFound);
    std::uint8_t ChooseNext(std::uint32_t inPrefix, std::uint32_t inPlace, std::uint32_t inCode);
    void SettleString(std::uint32_t inStart, std::vector<std::uint8_t>& outPixels) const;

    const std::uint8_t* mPresent = nullptr;
    const std::uint8_t* mOther = nullptr;
    std::uint32_t mCount = 0;
    NvLZWStringTable mTable;
    std::array<Exploration, 2> mExplorations{};
    std::uint32_t mBest = 0; // of the two
};
