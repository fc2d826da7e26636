#pragma once

#include <cstdint>

#include "nvcode2/gif/nvlzwstringtable.h"

/** Cuts a stream of pixels into the strings that LZW has codes for, without writing any.
 *
 *  A *miss* is a pixel whose string is not in the table: the string before it is one code, and a new string
 *  is added. When the table is full it is emptied at once, and the pixel that missed, the *reset position*,
 *  begins the next string; from there on the parse depends on nothing that came before.
 *
 *  The number of misses alone decides how many bits the codes take: every full table holds the same number of
 *  strings, and a code's width follows from how many were added before it. More misses always take more bits,
 *  so streams are compared by their misses. */
class PvLZWParser {
public:
    /** Where a parse stands within a segment, that is, since the table was last empty. */
    struct State {
        std::uint32_t mMisses = 0;
        std::uint32_t mPrefix = 0; ///< code of the string read so far
    };

    /** @param ioStrings  scratch space between Start and the end of a parse; borrowed for the parser's life
     */
    explicit PvLZWParser(NvLZWStringTable& ioStrings) : mTable(ioStrings) {}

    /** @param inPixelBits  2 to 8, of the pixels of all streams that follow
     *  @throws NvErrorCode  2 */
    void Begin(std::uint32_t inPixelBits);

    /** Misses that fill the table: the length of every segment but a stream's last. */
    std::uint32_t GetCapacity() const { return mCapacity; }

    /** Empties the table and begins a string with a pixel. */
    void Start(std::uint8_t inPixel);

    /** Reads pixels until they end or the table is full.
     *
     *  @param inPixels  the whole stream
     *  @param inEnd     where to stop
     *  @param ioNext    the pixel to be read next; when the table is full, the one that missed, with which to
     *  call Start
     *  @param inLimit   misses at which to stop too, at most the capacity
     *  @return          whether the limit was reached */
    bool Read(const std::uint8_t* inPixels, std::uint32_t inEnd, std::uint32_t& ioNext,
              std::uint32_t inLimit);
    bool Read(const std::uint8_t* inPixels, std::uint32_t inEnd, std::uint32_t& ioNext) {
        return Read(inPixels, inEnd, ioNext, mCapacity);
    }

    State GetState() const { return {mTable.GetCount(), mPrefix}; }

    /** Goes back to an earlier state of the same segment. */
    void Restore(const State& inState);

    /** Misses of a whole stream; any number from inToBeat on means "no fewer than that".
     *  @param inCount  at least one pixel */
    std::uint64_t CountMisses(const std::uint8_t* inPixels, std::uint32_t inCount,
                              std::uint64_t inToBeat = UINT64_MAX);

private:
    NvLZWStringTable& mTable;
    std::uint32_t mFirstFreeCode = 0;
    std::uint32_t mCapacity = 0;
    std::uint32_t mPrefix = 0;
};

/** The length in bits of the codes for a stream: first clear code, those of the misses, a clear code behind
 *  every full table, the pending string and the end code.
 *
 *  A code takes the width that was in force when the one before it was written, since decoders learn of each
 *  string one code late. */
std::uint64_t PvLZWBits(std::uint32_t inPixelBits, std::uint64_t inMisses);
