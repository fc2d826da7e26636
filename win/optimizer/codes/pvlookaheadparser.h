#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "nvcode2/gif/nvlzwstrings.h"
#include "win/optimizer/codes/pvchoicestrings.h"

/** Parses a stream of choices into strings so that each two in a row are as long as possible together, and
 *  settles each pixel on the way.
 *
 *  A string may end up to four pixels before the longest there is. A full table goes on being used while it
 *  pays: once the pixels that a code covers have become fewer than since the last clear on the whole, it is
 *  cleared. */
class PvLookAheadParser {
public:
    /** What two strings must gain together for the first to end early, when it adds nothing to the table for
     *  that: in pixels, and in sixteenths of what they cover. New strings are what greedy parsing lives on in
     *  drawings; in noise they are hardly ever met again. */
    struct Caution {
        std::uint32_t mPixels;
        std::uint32_t mSixteenths;
    };

    /** A parse. */
    struct Result {
        std::uint64_t mBits = 0;           ///< of all codes
        std::vector<std::uint8_t> mPixels; ///< settled
        NvLZWStrings mStrings;
    };

    /** @param ioStrings  scratch space while it parses; borrowed for the parser's life */
    explicit PvLookAheadParser(NvLZWStringTable& ioStrings) : mStrings(ioStrings) {}

    /** @param inChoices  at least one pixel
     *  @param inToBeat   bits at which to give up
     *  @param outResult  incomplete when its bits are no fewer than inToBeat */
    void Parse(const PvPixelChoices& inChoices, const Caution& inCaution, std::uint64_t inToBeat,
               Result& outResult);

private:
    using Found = PvChoiceStrings::Found;

    /** A string to be taken, the pixel behind it, and the longest string that begins there. */
    struct Step {
        Found mString;
        std::uint8_t mNextPixel = 0;
        Found mNext;
    };

    /** What codes have covered. */
    struct Coverage {
        std::uint64_t mPixels = 0;
        std::uint64_t mBits = 0;
        std::uint32_t mCodes = 0;
    };

    Step ChooseStep(const Found& inLongest, std::uint32_t inStart, const Caution& inCaution);
    bool ExploreBehind(const Found& inString, std::uint8_t inPixel, std::uint32_t inPlace, Found& outNext);
    void CountCode(std::uint32_t inPixels);
    void Learn(const Step& inStep, std::uint32_t inStart);
    bool HasStoppedPaying();
    void Clear();

    const std::uint8_t* mPresent = nullptr;
    const std::uint8_t* mOther = nullptr;
    std::uint32_t mCount = 0;
    PvChoiceStrings mStrings;
    PvStringPlaces mPlaces{};
    std::array<std::uint16_t, PvChoiceStrings::km_MaxCodes> mPrefixes{}; // of each string of the table

    std::uint32_t mFirstWidth = 0; // bits; these three of codes
    std::uint32_t mWidth = 0;      // that the strings added ask for
    std::uint32_t mWriteWidth = 0; // of the next one; follows one code later
    std::uint64_t mBits = 0;
    Coverage mSinceClear;
    Coverage mLately; // with the table full
};
