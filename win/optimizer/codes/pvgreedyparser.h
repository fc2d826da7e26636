#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "win/optimizer/codes/pvchoicestrings.h"

/** Parses a stream of choices into the longest strings that LZW has codes for, and settles each pixel on the
 *  way.
 *
 *  Where no string goes on, it takes the longest, and settles the next pixel so that the string after it
 *  becomes long too. */
class PvGreedyParser {
public:
    /** @param ioStrings  scratch space while it parses; borrowed for the parser's life */
    explicit PvGreedyParser(NvLZWStringTable& ioStrings) : mStrings(ioStrings) {}

    /** @param inChoices   at least one pixel
     *  @param inToBeat    codes at which to give up
     *  @param outPixels   the settled pixels, as many as the choices
     *  @return            the number of codes; the pixels are not all settled when that is inToBeat */
    std::uint64_t Parse(const PvPixelChoices& inChoices, std::uint64_t inToBeat,
                        std::vector<std::uint8_t>& outPixels);

private:
    using Found = PvChoiceStrings::Found;

    std::uint8_t ChooseNext(std::uint32_t inPrefix, std::uint32_t inPlace, Found& outNext);
    Found ExploreWith(std::uint32_t inPrefix, std::uint8_t inPixel, std::uint32_t inPlace);

    const std::uint8_t* mPresent = nullptr;
    const std::uint8_t* mOther = nullptr;
    PvChoiceStrings mStrings;
    PvStringPlaces mPlaces{};
};
