#include "win/optimizer/codes/pvfillchooser.h"

#include <algorithm>

#include "nvcode2/base/nvbytes.h"

namespace {

/** Whether eight bytes have no two in the same place alike. */
bool AllDiffer(const std::uint8_t* inFirst, const std::uint8_t* inSecond) {
    const std::uint64_t difference = NvLoadLittleEndian(inFirst) ^ NvLoadLittleEndian(inSecond);
    return ((difference - NvEightOf(0x01)) & ~difference & NvEightOf(0x80)) == 0;
}

/** Takes the other choice in every short run of pixels that have one, the present pixels elsewhere. */
void TakeShortRuns(const PvPixelChoices& inChoices, PvFillChooser::Pixels& outPixels) {
    constexpr std::size_t km_LongestRun = 16;
    outPixels = inChoices.mPresent;
    const std::size_t count = outPixels.size();
    const std::uint8_t* present = inChoices.mPresent.data();
    const std::uint8_t* other = inChoices.mOther.data();
    for (std::size_t begin = 0; begin < count;) {
        if (begin + 8 <= count && NvLoadLittleEndian(present + begin) == NvLoadLittleEndian(other + begin)) {
            begin += 8;
            continue;
        }
        std::size_t end = begin;
        while (end + 8 <= count && AllDiffer(present + end, other + end))
            end += 8;
        while (end < count && present[end] != other[end])
            ++end;
        if (end - begin <= km_LongestRun)
            std::copy(other + begin, other + end, outPixels.data() + begin);
        begin = std::max(end, begin + 1);
    }
}

} // namespace

bool PvFillChooser::Begin(const Pixels& inPresent, std::uint32_t inPixelBits, std::uint64_t inKnownCodes) {
    mParser.Begin(inPixelBits);
    mPresentCodes = mFewest = inKnownCodes > 0 ? inKnownCodes : CountCodes(inPresent, UINT64_MAX);
    bool anyToBeTried = false;
    for (Record& record : mRecords) {
        record.mIsToBeTried = IsToBeTried(record, inPresent.size(), mPresentCodes);
        anyToBeTried = anyToBeTried || record.mIsToBeTried;
    }
    return anyToBeTried;
}

bool PvFillChooser::IsToBeTried(Record& ioRecord, std::uint64_t inPixels, std::uint64_t inCodes) {
    const double likelySaved = ioRecord.mSaved / ioRecord.mCodes * static_cast<double>(inCodes);
    if (likelySaved * ioRecord.mPixelsPerCode >= static_cast<double>(inPixels) ||
        ioRecord.mPassedOver >= ioRecord.mPause)
        return true;
    ++ioRecord.mPassedOver;
    return false;
}

const PvFillChooser::Pixels* PvFillChooser::Choose(const PvPixelChoices& inChoices) {
    mBest = nullptr;
    if (mRecords[km_AllOthers].mIsToBeTried)
        Consider(km_AllOthers, CountCodes(inChoices.mOther, mFewest), inChoices.mOther);
    if (mRecords[km_ShortRuns].mIsToBeTried) {
        TakeShortRuns(inChoices, mShortRuns);
        Consider(km_ShortRuns, CountCodes(mShortRuns, mFewest), mShortRuns);
    }
    if (mRecords[km_Greedy].mIsToBeTried)
        Consider(km_Greedy, mGreedyParser.Parse(inChoices, mFewest, mGreedy), mGreedy);
    return mBest;
}

/** Codes that LZW needs for a stream: the fewer, the shorter the data, whatever their widths. */
std::uint64_t PvFillChooser::CountCodes(const Pixels& inPixels, std::uint64_t inToBeat) {
    const auto count = static_cast<std::uint32_t>(inPixels.size());
    return mParser.CountMisses(inPixels.data(), count, inToBeat - 1) + 1;
}

/** Keeps the pixels that a way settled if they need the fewest codes so far, and learns from them. */
void PvFillChooser::Consider(Way inWay, std::uint64_t inCodes, const Pixels& inPixels) {
    constexpr std::uint32_t km_LongestPause = 7;
    const std::uint64_t saved = inCodes < mFewest ? mFewest - inCodes : 0;
    Record& record = mRecords[inWay];
    record.mCodes += static_cast<double>(mPresentCodes);
    record.mSaved += static_cast<double>(saved);
    const bool hasPaid = saved * record.mPixelsPerCode >= inPixels.size();
    record.mPause = hasPaid ? 0 : std::min(std::max(record.mPause * 2, 1U), km_LongestPause);
    record.mPassedOver = 0;
    if (saved == 0)
        return;
    mFewest = inCodes;
    mBest = &inPixels;
}
