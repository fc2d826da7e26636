#include "win/optimizer/codes/pvlookaheadparser.h"

#include <algorithm>

namespace {

constexpr std::uint32_t km_MaxWidth = 12; // bits

// Pixels by which a string may end early. Eight save 0.1 % more for a third more time.
constexpr std::uint32_t km_LookBack = 4;

// Longer strings are never cut short: reading on from several places in them takes long, and they are few.
constexpr std::uint32_t km_LongestCut = 64;

// A full table is judged each time by so many codes, and cleared when they cover less than 17 twentieths of
// what codes have covered since the last clear. From 0.8 to 0.95 makes little difference.
constexpr std::uint32_t km_CodesJudged = 128;
constexpr std::uint64_t km_WorthwhileTwentieths = 17;

} // namespace

void PvLookAheadParser::Parse(const PvPixelChoices& inChoices, const Caution& inCaution,
                              std::uint64_t inToBeat, Result& outResult) {
    mPresent = inChoices.mPresent.data();
    mOther = inChoices.mOther.data();
    mCount = static_cast<std::uint32_t>(inChoices.mPresent.size());
    outResult.mPixels.resize(mCount);
    outResult.mStrings.clear();
    mStrings.Begin(inChoices);
    mFirstWidth = mWidth = mWriteWidth = inChoices.mPixelBits + 1;
    mBits = mFirstWidth; // the first clear code
    mSinceClear = mLately = Coverage();
    std::uint32_t start = 0;
    Found longest = mStrings.Explore(start, mPresent[0], mOther[0]);
    while (mBits < inToBeat) {
        const Step step = ChooseStep(longest, start, inCaution);
        const std::uint32_t length = step.mString.mLength;
        mPlaces.Settle(step.mString, start, outResult.mPixels.data());
        CountCode(length);
        outResult.mStrings.push_back({length, false});
        if (start + length == mCount)
            break;
        outResult.mPixels[start + length] = step.mNextPixel;
        longest = step.mNext;
        if (!mStrings.IsFull()) {
            Learn(step, start);
        } else if (HasStoppedPaying()) {
            outResult.mStrings.back().mClears = true;
            Clear();
            longest = mStrings.Explore(start + length, step.mNextPixel, step.mNextPixel);
        }
        start += length;
    }
    outResult.mBits = mBits + mWriteWidth; // the end code
}

PvLookAheadParser::Step PvLookAheadParser::ChooseStep(const Found& inLongest, std::uint32_t inStart,
                                                      const Caution& inCaution) {
    Step best{inLongest, 0, {}};
    if (inStart + inLongest.mLength == mCount)
        return best;
    std::uint32_t bestPixels = 0;
    std::uint32_t asked = 0; // of a string that adds nothing
    Found string = inLongest;
    const std::uint32_t shortest = inLongest.mLength > km_LongestCut
                                       ? inLongest.mLength
                                       : std::max(inLongest.mLength, km_LookBack + 1) - km_LookBack;
    while (true) {
        const std::uint32_t place = inStart + string.mLength;
        const std::uint32_t choices = mPresent[place] == mOther[place] ? 1 : 2;
        for (std::uint32_t i = 0; i < choices; ++i) {
            const std::uint8_t pixel = i == 0 ? mPresent[place] : mOther[place];
            Found next;
            const bool costsNothing = ExploreBehind(string, pixel, place, next);
            const std::uint32_t pixels = string.mLength + next.mLength;
            if (pixels > bestPixels && (costsNothing || pixels > asked)) {
                bestPixels = pixels;
                best = {string, pixel, next};
            }
        }
        if (string.mLength == inLongest.mLength)
            asked = bestPixels + bestPixels * inCaution.mSixteenths / 16 + inCaution.mPixels;
        if (string.mLength == shortest)
            return best;
        string = {string.mLength - 1, mPrefixes[string.mCode]};
    }
}

// The string about to be added may be the very one that the next needs, as in every run, so it is in the
// table while the next is looked for.
/** @return  whether a string is added with this pixel, or none could be */
bool PvLookAheadParser::ExploreBehind(const Found& inString, std::uint8_t inPixel, std::uint32_t inPlace,
                                      Found& outNext) {
    const bool isFull = mStrings.IsFull();
    const bool isNew = !isFull && !mStrings.Has(inString.mCode, inPixel);
    if (isNew)
        mStrings.Add(inString.mCode, inPixel);
    outNext = mStrings.Explore(inPlace, inPixel, inPixel);
    if (isNew)
        mStrings.RemoveLast(inString.mCode);
    return isNew || isFull;
}

void PvLookAheadParser::CountCode(std::uint32_t inPixels) {
    mBits += mWriteWidth;
    for (Coverage* coverage : {&mSinceClear, &mLately}) {
        coverage->mPixels += inPixels;
        coverage->mBits += mWriteWidth;
        ++coverage->mCodes;
    }
    mWriteWidth = mWidth;
}

void PvLookAheadParser::Learn(const Step& inStep, std::uint32_t inStart) {
    const std::uint32_t prefix = inStep.mString.mCode;
    if (mStrings.Has(prefix, inStep.mNextPixel)) {
        mStrings.AddAgain();
    } else {
        mPrefixes[mStrings.GetNextCode()] = static_cast<std::uint16_t>(prefix);
        mPlaces.SetPlace(mStrings.GetNextCode(), inStart);
        mStrings.Add(prefix, inStep.mNextPixel);
    }
    if (mStrings.IsFull())
        mLately = Coverage();
    else if (mStrings.GetNextCode() == 1U << mWidth)
        ++mWidth;
}

bool PvLookAheadParser::HasStoppedPaying() {
    if (mLately.mCodes < km_CodesJudged)
        return false;
    const bool pays = 20 * mLately.mPixels * mSinceClear.mBits >=
                      km_WorthwhileTwentieths * mSinceClear.mPixels * mLately.mBits;
    mLately = Coverage();
    return !pays;
}

void PvLookAheadParser::Clear() {
    mStrings.Clear();
    mBits += km_MaxWidth; // the clear code
    mWidth = mWriteWidth = mFirstWidth;
    mSinceClear = Coverage();
}
