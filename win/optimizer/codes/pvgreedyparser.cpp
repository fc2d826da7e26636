#include "win/optimizer/codes/pvgreedyparser.h"

#include <utility>

std::uint64_t PvGreedyParser::Parse(const PvPixelChoices& inChoices, std::uint64_t inToBeat,
                                    std::vector<std::uint8_t>& outPixels) {
    mPresent = inChoices.mPresent.data();
    mOther = inChoices.mOther.data();
    const auto count = static_cast<std::uint32_t>(inChoices.mPresent.size());
    outPixels.resize(count);
    mStrings.Begin(inChoices);
    std::uint64_t codes = 1;
    std::uint32_t start = 0;
    Found string = mStrings.Explore(start, mPresent[0], mOther[0]);
    while (codes < inToBeat) {
        mPlaces.Settle(string, start, outPixels.data());
        const std::uint32_t stringStart = std::exchange(start, start + string.mLength);
        if (start == count)
            break;
        ++codes;
        const std::uint32_t prefix = string.mCode;
        const std::uint8_t pixel = ChooseNext(prefix, start, string);
        outPixels[start] = pixel;
        mPlaces.SetPlace(mStrings.GetNextCode(), stringStart);
        mStrings.Add(prefix, pixel);
        if (mStrings.IsFull()) {
            mStrings.Clear();
            string = mStrings.Explore(start, pixel, pixel);
        }
    }
    return codes;
}

// The string about to be added may be the very one that the next needs, as in every run, so it is in the
// table while each choice of its last pixel is tried.
std::uint8_t PvGreedyParser::ChooseNext(std::uint32_t inPrefix, std::uint32_t inPlace, Found& outNext) {
    const std::uint8_t present = mPresent[inPlace];
    const std::uint8_t other = mOther[inPlace];
    outNext = ExploreWith(inPrefix, present, inPlace);
    if (other == present)
        return present;
    const Found withOther = ExploreWith(inPrefix, other, inPlace);
    if (withOther.mLength <= outNext.mLength)
        return present;
    outNext = withOther;
    return other;
}

PvGreedyParser::Found PvGreedyParser::ExploreWith(std::uint32_t inPrefix, std::uint8_t inPixel,
                                                  std::uint32_t inPlace) {
    mStrings.Add(inPrefix, inPixel);
    const Found found = mStrings.Explore(inPlace, inPixel, inPixel);
    mStrings.RemoveLast(inPrefix);
    return found;
}
