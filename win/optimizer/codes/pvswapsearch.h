#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "win/optimizer/codes/pvlzwparser.h"
#include "win/optimizer/codes/pvsegmentrecord.h"

/** Answers the swap search's question: does a frame's LZW data become shorter when two neighbouring pixels
 *  change places?
 *
 *  The answers are those that encoding the whole frame each time would give, at a fraction of the work:
 *  - The data's length grows with its misses (see PvLZWParser), so misses are compared.
 *  - What lies before the pair stays as it is. A parse stands before the pair and only moves forward; a
 *    trial is undone by taking back the strings that it added.
 *  - Where a table was emptied, what follows depends on the reset position and the pixels from there on
 *    alone. So the segment that begins at a reset position is remembered, and a trial that has come to its
 *    first reset goes on from segment to segment. Segments that begin at different positions soon meet.
 *  - Where many pairs of a segment are asked for, its parse is recorded, and a trial runs only where the two
 *    parses differ (see PvSegmentRecord). That pays where strings are short, and once several times as
 *    many pixels were read without a record as making one takes; the factor grows with each trial that gave
 * up.
 *
 *  Invariants, for a pair at positions q and q + 1 of the stream:
 *  - mSegments holds what is true of the pixels as they are. A trial neither asks for nor stores segments
 *    that begin at q + 1 or before, since they read the pair. When an exchange is kept, those of them that
 *    reach q are dropped; a segment reads the pixel at its end too, which is the one that missed.
 *  - The parse stands in the present stream, has read the pixels before mNext, and mNext is at most q at
 *  every trial it makes: an exchange kept at q leaves it true. It starts again when an exchange was kept that
 *  it did not try.
 *  - The record is true of the pixels as they are.
 *  - mMisses is the number of misses of the stream as it is. */
class PvSwapSearch {
public:
    /** @param ioStrings  scratch space from Begin to the last exchange; borrowed for the search's life */
    explicit PvSwapSearch(NvLZWStringTable& ioStrings) : mParser(ioStrings), mAhead(mStringsAhead) {}

    /** Starts on a frame.
     *
     *  @param ioPixels      borrowed until the next Begin; exchanges that are kept change them. Rows without
     *  gaps
     *  @param inColorCount  decides the code width as for the writer; every pixel is below it
     *  @param inInterlaced  rows count in the order in which an interlaced frame stores them
     *  @throws NvErrorCode  21 for a colour count that no table can have, 2 */
    void Begin(std::uint8_t* ioPixels, std::uint32_t inWidth, std::uint32_t inHeight,
               std::uint32_t inColorCount, bool inInterlaced);

    /** Exchanges a pixel and its right neighbour if that makes the frame's LZW data shorter.
     *
     *  @param inX  column of the left one, not the last
     *  @param inY  row, not the first
     *  @return     whether they changed places */
    bool ExchangeIfShorter(std::uint32_t inX, std::uint32_t inY);

    /** Pixels read for all frames so far, for measurements. */
    std::uint64_t GetPixelSteps() const { return mPixelSteps + mRecord.GetPixelSteps(); }

private:
    void FindSegment(std::uint32_t inPosition);
    static bool IsWorthRecording(std::uint32_t inStart, const PvSegment& inSegment);
    void RecordIfWorthIt(std::uint32_t inPair);
    void MoveTo(std::uint32_t inPosition);
    PvSegment Try(std::uint32_t inPair);
    PvSegment TryPlainly(std::uint32_t inPair);
    bool KeepIfFewer(std::uint32_t inPair, std::uint32_t inPresentEnd);
    void UpdateRecord(std::uint32_t inPair, const PvSegment& inSegment);
    std::uint64_t CountMisses(std::uint32_t inReset, std::uint32_t inUnchanged, std::uint64_t inToBeat);
    const PvSegment& SegmentFrom(std::uint32_t inReset);
    PvSegment ParseSegment(std::uint32_t inReset);
    void ForgetSegmentsOver(std::uint32_t inPair);

    std::uint8_t* mFrame = nullptr;        // as handed in
    std::uint8_t* mStream = nullptr;       // the same in file order: mFrame or mInterlaced
    std::vector<std::uint8_t> mInterlaced; // copy of an interlaced frame in file order
    std::vector<std::uint32_t> mRowStart;  // of each row in the stream
    std::uint32_t mWidth = 0;
    std::uint32_t mLength = 0; // of the stream
    std::uint64_t mMisses = 0;

    std::uint32_t mSegmentStart = 0; // of the segment that reads the pair
    std::uint64_t mMissesBefore = 0; // of the segments before that one

    static constexpr std::uint32_t km_Nowhere = UINT32_MAX;
    static constexpr std::uint32_t km_LeastReluctance = 4;
    static constexpr std::uint32_t km_MaxReluctance = 512;
    static constexpr std::uint32_t km_ShortString =
        3; // pixels; longer ones are passed over faster without a record
    PvLZWParser mParser;
    std::uint32_t mNext = km_Nowhere; // the pixel of the segment that the parser reads next

    PvSegmentRecord mRecord;
    std::uint64_t mPlainSteps = 0; // pixels read for trials without a record, in this segment
    std::uint32_t mReluctance =
        km_LeastReluctance; // times a segment's length to be read before it is recorded

    NvLZWStringTable mStringsAhead;
    PvLZWParser mAhead;                           // parses the segments
    std::map<std::uint32_t, PvSegment> mSegments; // by where they begin
    std::uint64_t mPixelSteps = 0;
};
