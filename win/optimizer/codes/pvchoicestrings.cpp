#include "win/optimizer/codes/pvchoicestrings.h"

#include <utility>

void PvChoiceStrings::Begin(const PvPixelChoices& inChoices) {
    mPresent = inChoices.mPresent.data();
    mOther = inChoices.mOther.data();
    mCount = static_cast<std::uint32_t>(inChoices.mPresent.size());
    mFirstFreeCode = (1U << inChoices.mPixelBits) + 2;
    Clear();
}

void PvChoiceStrings::Clear() {
    mTable.Clear();
    mNextCode = mFirstFreeCode;
    mNodes.fill(Node());
}

PvChoiceStrings::Found PvChoiceStrings::Explore(std::uint32_t inStart, std::uint8_t inFirst,
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
std::uint32_t PvChoiceStrings::FollowOne(Strings& ioStrings, std::uint32_t& ioPlace) const {
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
std::uint32_t PvChoiceStrings::Extend(const Strings& inStrings, std::uint32_t inCount, std::uint32_t inPlace,
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
