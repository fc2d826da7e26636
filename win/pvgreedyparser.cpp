#include "win/pvgreedyparser.h"

#include <utility>

std::uint64_t PvGreedyParser::Parse(const PvPixelChoices& inChoices, std::uint64_t inToBeat,
                                    std::vector<std::uint8_t>& outPixels) {
    mPresent = inChoices.mPresent.data();
    mOther = inChoices.mOther.data();
    mCount = static_cast<std::uint32_t>(inChoices.mPresent.size());
    outPixels = inChoices.mPresent;

    const std::uint32_t firstFreeCode = (1U << inChoices.mPixelBits) + 2;
    mTable.Begin(inChoices.mPixelBits);
    std::uint32_t nextCode = firstFreeCode;
    std::uint64_t codes = 1;
    std::uint32_t start = 0;
    Explore(start, mPresent[0], mOther[0], mExplorations[mBest]);
    while (codes < inToBeat) {
        const std::uint32_t prefix = mExplorations[mBest].mCode;
        SettleString(start, outPixels);
        start += mExplorations[mBest].mLength;
        if (start == mCount)
            break;
        ++codes;
        const std::uint8_t pixel = ChooseNext(prefix, start, nextCode);
        mTable.Add(prefix, pixel, nextCode++);
        if (nextCode == NvLZWStringTable::km_MaxCodes) {
            mTable.Clear();
            nextCode = firstFreeCode;
            Explore(start, pixel, pixel, mExplorations[mBest]);
        }
    }
    return codes;
}

/** Follows every string that starts with one of two pixels. */
void PvGreedyParser::Explore(std::uint32_t inStart, std::uint8_t inFirst, std::uint8_t inSecond,
                             Exploration& outFound) const {
    std::array<std::array<std::uint32_t, 2 * km_StringsFollowed>, 2> codes; // of this place and of the next
    std::uint32_t* strings = codes[0].data();
    std::uint32_t* longer = codes[1].data();
    strings[0] = inFirst;
    strings[1] = inSecond;
    std::uint32_t count = inFirst == inSecond ? 1 : 2;
    outFound.mFirstPixels = {inFirst, inSecond};
    std::uint32_t length = 1;
    for (; inStart + length < mCount; ++length) {
        const std::uint8_t present = mPresent[inStart + length];
        const std::uint8_t other = mOther[inStart + length];
        Origins& origins = outFound.mPlaces[length];
        std::uint32_t longerCount = 0;
        // A string is stored whether it exists or not, and overwritten when it does not.
        const auto extend = [&](std::uint32_t inString, std::uint8_t inPixel, bool inIsOther) {
            longer[longerCount] = mTable.Find(strings[inString], inPixel);
            origins.mOrigins[longerCount] = static_cast<std::uint8_t>(inString << 1 | (inIsOther ? 1U : 0U));
            longerCount += longer[longerCount] != 0 ? 1 : 0;
        };
        for (std::uint32_t i = 0; i < count && longerCount < km_StringsFollowed; ++i) {
            extend(i, present, false);
            if (other != present)
                extend(i, other, true);
        }
        if (longerCount == 0)
            break;
        std::swap(strings, longer);
        count = longerCount;
    }
    outFound.mLength = length;
    outFound.mCode = strings[0];
}

// The string about to be added may be the very one that the next needs, as in every run, so it is in the
// table while each choice of its last pixel is tried.
std::uint8_t PvGreedyParser::ChooseNext(std::uint32_t inPrefix, std::uint32_t inPlace, std::uint32_t inCode) {
    const std::uint8_t present = mPresent[inPlace];
    const std::uint8_t other = mOther[inPlace];
    ExploreWith(inPrefix, present, inPlace, inCode, mExplorations[mBest]);
    if (other == present)
        return present;
    ExploreWith(inPrefix, other, inPlace, inCode, mExplorations[1 - mBest]);
    if (mExplorations[1 - mBest].mLength <= mExplorations[mBest].mLength)
        return present;
    mBest = 1 - mBest;
    return other;
}

void PvGreedyParser::ExploreWith(std::uint32_t inPrefix, std::uint8_t inPixel, std::uint32_t inPlace,
                                 std::uint32_t inCode, Exploration& outFound) {
    mTable.Add(inPrefix, inPixel, inCode);
    Explore(inPlace, inPixel, inPixel, outFound);
    mTable.RemoveLast();
}

void PvGreedyParser::SettleString(std::uint32_t inStart, std::vector<std::uint8_t>& outPixels) const {
    const Exploration& best = mExplorations[mBest];
    std::uint32_t string = 0;
    for (std::uint32_t i = best.mLength - 1; i > 0; --i) {
        const std::uint32_t origin = best.mPlaces[i].mOrigins[string];
        if ((origin & 1U) != 0)
            outPixels[inStart + i] = mOther[inStart + i];
        string = origin >> 1;
    }
    outPixels[inStart] = best.mFirstPixels[string];
}
