#include "win/optimizer/codes/pvsegmentrecord.h"

#include <algorithm>

#include "nvcode2/base/nverrorcode.h"

void PvSegmentRecord::Begin(const std::uint8_t* inStream, std::uint32_t inLength, std::uint32_t inPixelBits) {
    mStream = inStream;
    mLength = inLength;
    mIsValid = false;
    ForgetStrings(0);
    mFirstFreeCode = (1U << inPixelBits) + 2;
    mCapacity = km_MaxCodes - mFirstFreeCode;
    if (mTrialNumber >= km_MaxTrials / 2) { // long before the numbers run out
        mTrialNumber = 0;
        for (String& string : mStrings)
            string.mMark = 0;
    }
    mPixelBits = inPixelBits;
}

void PvSegmentRecord::MakeRoom() {
    if (mPixelBits <= mRoomBits)
        return;
    mCodes.reset(static_cast<std::uint16_t*>(
        std::calloc(std::size_t{2 * km_MaxCodes} << mPixelBits, sizeof(std::uint16_t))));
    mRoomBits = mCodes ? mPixelBits : 0;
    if (!mCodes)
        NvThrow(NvErrorCode::km_OutOfMemory);
}

void PvSegmentRecord::Record(std::uint32_t inStart) {
    MakeRoom();
    mIsValid = true;
    mStart = mLinkedFrom = inStart;
    mPositions.assign(1, {});
    ReadOn(inStart + 1, mStream[inStart]);
}

void PvSegmentRecord::RecordFrom(std::uint32_t inPair) {
    mLinkedFrom = inPair;
    ReadOn(inPair, PrefixAt(inPair));
}

// What was recorded from there on is forgotten.
void PvSegmentRecord::ReadOn(std::uint32_t inNext, std::uint32_t inPrefix) {
    ForgetStrings(inNext < GetEnd() ? At(inNext).mMissesBefore : 0);
    mPositions.resize(inNext - mStart);
    std::uint32_t prefix = inPrefix;
    for (std::uint32_t next = inNext; next < mLength && mMisses < mCapacity; ++next) {
        const std::uint32_t slot = SlotOf(prefix, mStream[next]);
        const std::uint32_t known = mCodes[slot];
        const std::uint32_t asked = known != 0 ? known : mFirstFreeCode + mMisses;
        mPositions.push_back({static_cast<std::uint16_t>(asked), static_cast<std::uint16_t>(mMisses)});
        String& string = mStrings[asked];
        if (known != 0) {
            // What was read before may have asked here for another string.
            if (string.mLast < next && At(string.mLast).mString == asked)
                At(string.mLast).mNextAsking = next;
            prefix = asked;
        } else {
            mCodes[slot] = static_cast<std::uint16_t>(asked);
            string.mSlot = slot;
            string.mBorn = next;
            prefix = mStream[next];
            ++mMisses;
        }
        string.mLast = next;
    }
    mPixelSteps += GetEnd() - inNext;
}

void PvSegmentRecord::ForgetStrings(std::uint32_t inMisses) {
    while (mMisses > inMisses)
        mCodes[mStrings[mFirstFreeCode + --mMisses].mSlot] = 0;
}

std::optional<PvSegment> PvSegmentRecord::Try(std::uint32_t inPair) {
    ++mTrialNumber;
    const std::optional<PvSegment> segment = RunTrial(inPair);
    mDiffering.clear();
    while (mTrialStrings > 0)
        mCodes[mStrings[km_MaxCodes + --mTrialStrings].mSlot] = 0;
    return segment;
}

std::optional<PvSegment> PvSegmentRecord::RunTrial(std::uint32_t inPair) {
    std::uint32_t budget = (GetEnd() - inPair) / 2 + km_LeastBudget;
    Trial trial{inPair, PrefixAt(inPair), At(inPair).mMissesBefore, inPair};
    while (ReadUntilInStep(trial, inPair + 2, budget)) {
        const std::uint32_t step = trial.mNext - 1;
        const std::uint32_t ahead = trial.mMisses - (At(step).mMissesBefore + 1U); // modulo 2^32
        const std::uint32_t next = FindNextDifference(trial.mThreshold, step);
        const std::uint32_t misses = (next < GetEnd() ? At(next).mMissesBefore : mMisses) + ahead;
        if (misses >= mCapacity)
            return PvSegment{mStrings[mFirstFreeCode + mCapacity - 1 - ahead].mBorn, mCapacity};
        if (next < GetEnd())
            trial = {next, PrefixAt(next), misses, next};
        else // the trial's table is not full yet where the record's is
            trial = {GetEnd(), mStream[GetEnd() - 1], misses, km_Never};
    }
    if (budget == 0)
        return std::nullopt;
    return PvSegment{trial.mNext, trial.mMisses};
}

/** Reads on until the trial is in step with the record again.
 *  @param inFirst   where it can be, at the earliest
 *  @param ioBudget  positions that may be read
 *  @return          false when the table is full, at the end of the stream, and when the budget is spent */
bool PvSegmentRecord::ReadUntilInStep(Trial& ioTrial, std::uint32_t inFirst, std::uint32_t& ioBudget) {
    Trial trial = ioTrial;
    bool isInStep = false;
    for (; trial.mNext < mLength && ioBudget > 0 && !isInStep; ++trial.mNext, --ioBudget, ++mPixelSteps) {
        const std::uint32_t slot = SlotOf(trial.mPrefix, mStream[trial.mNext]);
        const std::uint32_t string = mCodes[slot];
        if (string != 0 && Has(string, trial.mThreshold)) {
            trial.mPrefix = string;
            continue;
        }
        if (++trial.mMisses == mCapacity)
            break;
        AddInTrial(string, slot);
        trial.mPrefix = mStream[trial.mNext];
        isInStep = trial.mNext >= inFirst && IsMiss(trial.mNext);
    }
    ioTrial = trial;
    return isInStep;
}

void PvSegmentRecord::AddInTrial(std::uint32_t inString, std::uint32_t inSlot) {
    if (inString == 0) {
        const std::uint32_t added = km_MaxCodes + mTrialStrings++;
        mCodes[inSlot] = static_cast<std::uint16_t>(added);
        mStrings[added].mSlot = inSlot;
        return;
    }
    String& string = mStrings[inString];
    if (!IsMarked(string))
        mDiffering.push_back({inString, string.mBorn});
    string.mMark = 2 * mTrialNumber + 1;
}

/** Where the record first asks for a string that one parse has and the other lacks, or km_Never.
 *  @param inThreshold  from where on the trial was not in step
 *  @param inStep       behind which it is */
std::uint32_t PvSegmentRecord::FindNextDifference(std::uint32_t inThreshold, std::uint32_t inStep) {
    const std::uint32_t firstBorn = mFirstFreeCode + At(inThreshold).mMissesBefore;
    for (std::uint32_t born = firstBorn; born <= At(inStep).mString; ++born)
        if (!IsMarked(mStrings[born])) {
            mStrings[born].mMark = 2 * mTrialNumber;
            mDiffering.push_back({born, mStrings[born].mBorn});
        }
    std::uint32_t next = km_Never;
    for (std::size_t i = 0; i < mDiffering.size();) {
        Difference& difference = mDiffering[i];
        if (difference.mAsked <= inStep && !FindNextAsking(difference, inStep)) {
            difference = mDiffering.back();
            mDiffering.pop_back();
        } else {
            next = std::min(next, difference.mAsked);
            ++i;
        }
    }
    return next;
}

/** Whether the record asks for a string behind a position, and the parses differ in it there. */
bool PvSegmentRecord::FindNextAsking(Difference& ioDifference, std::uint32_t inStep) {
    if (mStrings[ioDifference.mString].mMark % 2 != 0)
        return false; // both have it: the trial had it early, or has added it since
    while (ioDifference.mAsked <= inStep)
        ioDifference.mAsked = At(ioDifference.mAsked).mNextAsking;
    return ioDifference.mAsked != km_Never;
}
