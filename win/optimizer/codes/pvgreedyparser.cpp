#include "win/optimizer/codes/pvgreedyparser.h"

#include <algorithm>
#include <cstring>
#include <utility>

std::uint64_t PvGreedyParser::Parse(const PvPixelChoices& inChoices, std::uint64_t inToBeat,
                                    std::vector<std::uint8_t>& outPixels) {
    mPresent = inChoices.mPresent.data();
    mOther = inChoices.mOther.data();
    mCount = static_cast<std::uint32_t>(inChoices.mPresent.size());
    outPixels.resize(mCount);

    const std::uint32_t firstFreeCode = (1U << inChoices.mPixelBits) + 2;
    mTable.Begin(inChoices.mPixelBits);
    Clear(firstFreeCode);
    std::uint64_t codes = 1;
    std::uint32_t start = 0;
    Found string = Explore(start, mPresent[0], mOther[0]);
    while (codes < inToBeat) {
        Settle(string, start, outPixels.data());
        const std::uint32_t stringStart = std::exchange(start, start + string.mLength);
        if (start == mCount)
            break;
        ++codes;
        const std::uint32_t prefix = string.mCode;
        const std::uint8_t pixel = ChooseNext(prefix, start, string);
        outPixels[start] = pixel;
        mPlaces[mNextCode] = stringStart;
        Add(prefix, pixel);
        if (mNextCode == NvLZWStringTable::km_MaxCodes) {
            Clear(firstFreeCode);
            string = Explore(start, pixel, pixel);
        }
    }
    return codes;
}

void PvGreedyParser::Clear(std::uint32_t inFirstFreeCode) {
    mTable.Clear();
    mNextCode = inFirstFreeCode;
    mNodes.fill(Node());
}

void PvGreedyParser::Add(std::uint32_t inPrefix, std::uint8_t inPixel) {
    Node& node = mNodes[inPrefix];
    if (node.mFirstChild == 0)
        node = {static_cast<std::uint16_t>(mNextCode), inPixel, 0};
    else
        ++node.mOthers;
    mTable.Add(inPrefix, inPixel, mNextCode++);
}

void PvGreedyParser::RemoveLast(std::uint32_t inPrefix) {
    Node& node = mNodes[inPrefix];
    if (node.mFirstChild == --mNextCode)
        node = Node();
    else
        --node.mOthers;
    mTable.RemoveLast();
}

/** Follows every string that starts with one of two pixels.
 *  @return  the longest; of equally long ones the one whose choices were the present pixels for longer */
PvGreedyParser::Found PvGreedyParser::Explore(std::uint32_t inStart, std::uint8_t inFirst,
                                              std::uint8_t inSecond) const {
    std::array<Strings, 2> strings; // of one place and of the next, in turns
    Strings* present = &strings[0];
    Strings* longer = &strings[1];
    (*present)[0] = inFirst;
    (*present)[1] = inSecond;
    std::uint32_t count = inFirst == inSecond ? 1 : 2;
    std::uint32_t place = inStart + 1;
    while (place < mCount) {
        if (count == 1) {
            count = FollowOne(*present, place);
            if (count == 1)
                break;
            continue;
        }
        const std::uint32_t longerCount = Extend(*present, count, place, *longer);
        if (longerCount == 0)
            break;
        std::swap(present, longer);
        count = longerCount;
        ++place;
    }
    return {place - inStart, (*present)[0]};
}

/** Follows a single string, which is the case nearly always, until it ends or goes on as two.
 *  @return  how many there are at ioPlace: 1 when it goes on no further */
std::uint32_t PvGreedyParser::FollowOne(Strings& ioStrings, std::uint32_t& ioPlace) const {
    std::uint32_t code = ioStrings[0];
    std::uint32_t place = ioPlace;
    std::uint32_t count = 1;
    for (; place < mCount; ++place) {
        const Node& node = mNodes[code];
        const std::uint8_t present = mPresent[place];
        const std::uint8_t other = mOther[place];
        if (node.mOthers == 0) {
            if (node.mFirstChild == 0 || (node.mFirstPixel != present && node.mFirstPixel != other))
                break;
            code = node.mFirstChild;
            continue;
        }
        const std::uint32_t first = mTable.Find(code, present);
        const std::uint32_t second = other == present ? 0 : mTable.Find(code, other);
        if ((first | second) == 0)
            break;
        if (first != 0 && second != 0) {
            code = first;
            ioStrings[1] = second;
            count = 2;
            ++place;
            break;
        }
        code = first | second;
    }
    ioStrings[0] = code;
    ioPlace = place;
    return count;
}

/** Extends strings by the pixels that a place allows, as far as the table has them.
 *  @return  how many there are then */
std::uint32_t PvGreedyParser::Extend(const Strings& inStrings, std::uint32_t inCount, std::uint32_t inPlace,
                                     Strings& outLonger) const {
    const std::uint8_t present = mPresent[inPlace];
    const std::uint8_t other = mOther[inPlace];
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < inCount && count < km_StringsFollowed; ++i) {
        const Node& node = mNodes[inStrings[i]];
        if (node.mFirstChild == 0)
            continue;
        if (node.mOthers == 0) {
            outLonger[count] = node.mFirstChild;
            count += node.mFirstPixel == present || node.mFirstPixel == other ? 1 : 0;
            continue;
        }
        // A string is stored whether it exists or not, and overwritten when it does not.
        outLonger[count] = mTable.Find(inStrings[i], present);
        count += outLonger[count] != 0 ? 1 : 0;
        if (other != present) {
            outLonger[count] = mTable.Find(inStrings[i], other);
            count += outLonger[count] != 0 ? 1 : 0;
        }
    }
    return count;
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
    Add(inPrefix, inPixel);
    const Found found = Explore(inPlace, inPixel, inPixel);
    RemoveLast(inPrefix);
    return found;
}

/** Writes a string's pixels: they stand where it was added to the table, one pixel of which may be the first
 *  of these and is written already. */
void PvGreedyParser::Settle(const Found& inString, std::uint32_t inStart, std::uint8_t* ioPixels) const {
    if (inString.mLength == 1)
        ioPixels[inStart] = static_cast<std::uint8_t>(inString.mCode);
    else
        std::memmove(ioPixels + inStart, ioPixels + mPlaces[inString.mCode], inString.mLength);
}
