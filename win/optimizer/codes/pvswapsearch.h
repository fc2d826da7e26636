#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "nvcode2/gif/nvlentstringtable.h"
#include "win/optimizer/codes/pvlzwparser.h"

/** What follows a reset position, or the beginning of a stream, up to the next reset (see PvLZWParser). */
struct PvSegment {
    std::uint32_t mEnd = 0; ///< the next reset position, the stream's length when there is none
    std::uint32_t mMisses = 0;
};

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
 *
 *  Writing a segment's parse down and deriving each trial from it, only where the two differ, takes half the
 *  pixel steps in dithered pictures; real files gained nothing for twice the code.
 *
 *  Invariants, for a pair at positions q and q + 1 of the stream:
 *  - mSegments holds what is true of the pixels as they are. A trial neither asks for nor stores segments
 *    that begin at q + 1 or before, since they read the pair. When an exchange is kept, those of them that
 *    reach q are dropped; a segment reads the pixel at its end too, which is the one that missed.
 *  - The parse stands in the present stream, has read the pixels before mNext, and mNext is at most q at
 *    every trial it makes: an exchange kept at q leaves it true.
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

    /** Length in bits of the frame's codes, see PvLZWBits, as it is now and as it was at the beginning. */
    std::uint64_t GetBits() const { return PvLZWBits(mPixelBits, mMisses); }
    std::uint64_t GetBitsBefore() const { return PvLZWBits(mPixelBits, mMissesAtBegin); }

    /** Pixels read for all frames so far. */
    std::uint64_t GetPixelSteps() const { return mPixelSteps; }

private:
    void FindSegment(std::uint32_t inPosition);
    void MoveTo(std::uint32_t inPosition);
    PvSegment Try(std::uint32_t inPair);
    bool KeepIfFewer(std::uint32_t inPair, std::uint32_t inPresentEnd);
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
    std::uint32_t mPixelBits = 2;
    std::uint64_t mMisses = 0;
    std::uint64_t mMissesAtBegin = 0;

    std::uint32_t mSegmentStart = 0; // of the segment that reads the pair
    std::uint64_t mMissesBefore = 0; // of the segments before that one

    static constexpr std::uint32_t km_Nowhere = UINT32_MAX;
    PvLZWParser mParser;
    std::uint32_t mNext = km_Nowhere; // the pixel of the segment that the parser reads next

    NvLentStringTable mStringsAhead;
    PvLZWParser mAhead;                           // parses the segments
    std::map<std::uint32_t, PvSegment> mSegments; // by where they begin
    std::uint64_t mPixelSteps = 0;
};
