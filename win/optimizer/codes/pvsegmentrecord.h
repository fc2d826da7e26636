#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

/** What follows a reset position, or the beginning of a stream, up to the next reset (see PvLZWParser). */
struct PvSegment {
    std::uint32_t mEnd = 0; ///< the next reset position, the stream's length when there is none
    std::uint32_t mMisses = 0;
};

/** One segment's parse, written down so that the parse of a stream that differs in two pixels can be
 *  derived by running only where the two parses differ.
 *
 *  Each pixel of a segment asks the string table one question: whether the string read so far and this pixel
 *  make a string. A no is a miss and adds that very string. So the record holds all strings of the segment as
 *  a tree, when each was *born* (the position of the miss that added it), and for each position the string it
 *  asks for, linked with the next position that asks for the same. Times are
 *  positions, never codes: a local change shifts codes, and they would all have to be rewritten.
 *
 *  A trial parses the stream as it is now, with two pixels exchanged since it was recorded, from the first of
 *  them on. It is *in step* with the record behind a position beyond the pair at which both miss: both have
 *  read the pixel there and nothing else of their next string. From there on they give the same answers, and
 *  add the same strings, up to the first question about a string that one of them has and the other lacks:
 *  - A string that the record has and the trial lacks is asked for where the record reads it next.
 *  - One that the trial has early is asked for where the record adds it; one that the record never adds is
 *    never asked for.
 *  So the trial goes on at the earliest of those positions, as many misses ahead of the record as it was when
 *  they fell in step. When there is none, the rest of the segment follows from the record.
 *
 *  Invariants:
 *  - Of a string in the tree the trial has those born before mThreshold, but for those marked with its
 *  number: present or absent. Strings that are not in the tree are added under numbers from km_MaxCodes on,
 *  and taken out again when the trial ends.
 *  - In step behind position r, mDiffering has every string that one has and the other lacks, and that the
 *    record asks for behind r.
 *  - Links are right from the last position on where an exchange was kept; the strings that trials behind it
 *    follow were all born there or later. */
class PvSegmentRecord {
public:
    /** @param inStream  borrowed; may change by exchanges, as described above */
    void Begin(const std::uint8_t* inStream, std::uint32_t inLength, std::uint32_t inPixelBits);

    void Drop() { mIsValid = false; }
    bool Holds(std::uint32_t inStart) const { return mIsValid && mStart == inStart; }

    /** Whether a pair of the segment lies behind the last exchange that was kept, as Try demands; RecordFrom
     *  makes it so. */
    bool Serves(std::uint32_t inPair) const { return mLinkedFrom <= inPair; }

    /** Whether a pair at inPair and inPair + 1 is among the pixels read. */
    bool Reads(std::uint32_t inPair) const {
        return mIsValid && mStart <= inPair + 1 && inPair < mStart + mPositions.size();
    }

    /** Records the segment that begins at a position; each of its pixels takes 8 bytes.
     *  @throws NvErrorCode  2 */
    void Record(std::uint32_t inStart);

    /** Records afresh from a pair on, which may have changed places since. */
    void RecordFrom(std::uint32_t inPair);

    /** The segment as it becomes by an exchange that has been made in the stream.
     *  @param inPair  behind the segment's beginning, up to its end; Serves must hold
     *  @return        nothing when that would take too long */
    std::optional<PvSegment> Try(std::uint32_t inPair);

    /** Pixels read so far, for measurements. */
    std::uint64_t GetPixelSteps() const { return mPixelSteps; }

private:
    static constexpr std::uint32_t km_MaxCodes = 4096;
    static constexpr std::uint32_t km_Never = UINT32_MAX;
    static constexpr std::uint32_t km_LeastBudget = 64; // positions
    static constexpr std::uint32_t km_MaxTrials = UINT32_MAX / 2;

    struct Position {
        std::uint16_t mString = 0; // asked for here
        std::uint16_t mMissesBefore = 0;
        std::uint32_t mNextAsking = km_Never; // for the same string
    };

    struct String {
        std::uint32_t mBorn = 0; // position; 0 for those of a trial
        std::uint32_t mLast = 0; // position that asked for it last, while recording
        std::uint32_t mMark = 0; // of the trial that changed its presence: twice its number, 1 more: present
        std::uint32_t mSlot = 0;
    };

    /** A string that one parse has and the other lacks. */
    struct Difference {
        std::uint32_t mString = 0;
        std::uint32_t mAsked = 0; // position in the record that asks for it
    };

    /** Where a trial stands. */
    struct Trial {
        std::uint32_t mNext = 0; // position to be read
        std::uint32_t mPrefix = 0;
        std::uint32_t mMisses = 0;
        std::uint32_t mThreshold = 0;
    };

    struct FreeMemory {
        void operator()(std::uint16_t* inMemory) const { std::free(inMemory); }
    };

    static std::uint32_t SlotOf(std::uint32_t inPrefix, std::uint32_t inPixel) {
        return inPixel * 2 * km_MaxCodes + inPrefix;
    }
    Position& At(std::uint32_t inPosition) { return mPositions[inPosition - mStart]; }
    std::uint32_t GetEnd() const { return mStart + static_cast<std::uint32_t>(mPositions.size()); }
    bool IsMiss(std::uint32_t inPosition) {
        return inPosition < GetEnd() && mStrings[At(inPosition).mString].mBorn == inPosition;
    }
    std::uint32_t PrefixAt(std::uint32_t inPosition) {
        return mStrings[At(inPosition).mString].mSlot % (2 * km_MaxCodes);
    }
    bool IsMarked(const String& inString) const { return inString.mMark / 2 == mTrialNumber; }
    bool Has(std::uint32_t inString, std::uint32_t inThreshold) const {
        const String& string = mStrings[inString];
        return IsMarked(string) ? string.mMark % 2 != 0 : string.mBorn < inThreshold;
    }

    void MakeRoom();
    void ForgetStrings(std::uint32_t inMisses);
    void ReadOn(std::uint32_t inNext, std::uint32_t inPrefix);
    std::optional<PvSegment> RunTrial(std::uint32_t inPair);
    bool ReadUntilInStep(Trial& ioTrial, std::uint32_t inFirst, std::uint32_t& ioBudget);
    void AddInTrial(std::uint32_t inString, std::uint32_t inSlot);
    std::uint32_t FindNextDifference(std::uint32_t inThreshold, std::uint32_t inStep);
    bool FindNextAsking(Difference& ioDifference, std::uint32_t inStep);

    const std::uint8_t* mStream = nullptr;
    std::uint32_t mLength = 0;
    std::uint32_t mPixelBits = 0;
    std::uint32_t mRoomBits = 0; // of the pixels that mCodes has room for
    std::uint32_t mFirstFreeCode = 0;
    std::uint32_t mCapacity = 0;

    bool mIsValid = false;
    std::uint32_t mStart = 0;
    std::uint32_t mMisses = 0;
    std::uint32_t mLinkedFrom = 0;    // from here on positions are linked with those behind them
    std::vector<Position> mPositions; // from mStart on; the first, which asks for nothing, is not used
    std::unique_ptr<std::uint16_t[], FreeMemory> mCodes; // 0: no such string
    std::array<String, 2 * km_MaxCodes> mStrings{};

    std::uint32_t mTrialNumber = 0;
    std::uint32_t mTrialStrings = 0;    // that are not in the tree
    std::vector<Difference> mDiffering; // some of them do not differ any more
    std::uint64_t mPixelSteps = 0;
};
