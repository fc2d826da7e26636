#pragma once

#include <array>
#include <cstdint>

class NvFileReader;

/** Decompresses the LZW data sub-blocks of one GIF frame into rows of colour indices.
 *
 *  Order of calls for one frame: Begin, DecodeRows once or more (once per interlace pass), End.
 *
 *  What is accepted beyond the strict format, since real files need it:
 *  - a stream without a first clear code: the first code is then taken as if one stood before it;
 *  - clear codes in a row, and streams that go on with a full table until a clear code arrives;
 *  - a code beyond the next free one, which is read as the next free one;
 *  - sub-blocks that end without an end code: the pixels that did not arrive are told by the result of
 * DecodeRows;
 *  - a minimum code size of 1, when the stream yields exactly the frame's pixels. */
class LZWDecoder {
public:
    /** @param inReader  borrowed for the decoder's life; positioned by the caller at the minimum code size
     * byte */
    explicit LZWDecoder(NvFileReader& inReader);

    /** Reads the minimum code size.
     *  @throws NvErrorCode  28 when it is 0 or above 11; 18 when the file ends */
    void Begin();

    /** Decodes the next rows of the stream.
     *  @param outPixels  first pixel of the first row; pixels that do not arrive are left as they are
     *  @param inStride   bytes from one row to the next
     *  @return           number of pixels that arrived, inWidth * inRows unless the stream has ended
     *  @throws NvErrorCode  28 for a corrupt stream, 18 when the file ends inside it */
    std::uint64_t DecodeRows(std::uint8_t* outPixels, std::uint32_t inWidth, std::uint32_t inRows,
                             std::uint32_t inStride);

    /** Ends the frame. What the stream holds beyond the frame's pixels is ignored, but with a minimum code
     * size of 1.
     *  @throws NvErrorCode  28 when a stream of minimum code size 1 goes on */
    void End();

private:
    class RowCursor;

    static constexpr std::uint32_t km_MaxCodeSize = 12; // bits
    static constexpr std::uint32_t km_TableSize =
        4097; // one more than 12 bits can name; the last is never read
    static constexpr std::uint32_t km_MaxRoot = 255;

    std::uint32_t ReadCode();
    bool ReadBlock();
    void ResetTable();
    void StartString(std::uint32_t inRoot, RowCursor& ioCursor);
    void ContinueString(std::uint32_t inCode, RowCursor& ioCursor);
    void AddString(std::uint32_t inPrefix, std::uint32_t inSuffix);
    void Deliver(std::uint32_t inCode, RowCursor& ioCursor);
    std::uint8_t* ExpandBackwards(std::uint32_t inCode, std::uint8_t* outEnd) const;
    void DeliverPending(RowCursor& ioCursor);

    NvFileReader& mReader;
    std::uint32_t mMinimumCodeSize = 0; // bits
    std::uint32_t mCodeSize = 0;        // bits
    std::uint32_t mClearCode = 0;
    std::uint32_t mEndCode = 0;
    std::uint32_t mNextCode = 0; // next code to be defined; stops at km_TableSize
    std::uint32_t mMaxCode = 0;  // 2^mCodeSize
    std::uint32_t mPreviousCode = 0;
    std::uint32_t mPreviousFirst = 0; // first pixel of the previous string
    bool mHasEnded = false;

    // String of a code: the string of its prefix, then its suffix. Length 0 marks a string that can never be
    // expanded, because its prefix was not defined when it was added.
    std::array<std::uint16_t, km_TableSize> mPrefix{};
    std::array<std::uint16_t, km_TableSize> mLength{}; // pixels
    std::array<std::uint8_t, km_TableSize> mSuffix{};
    std::array<std::uint8_t, km_TableSize> mFirst{};

    std::array<std::uint8_t, 255> mBlock{};
    std::uint32_t mBlockNext = 0;
    std::uint32_t mBlockEnd = 0;
    std::uint64_t mAccumulator = 0;
    std::uint32_t mBitCount = 0;

    // The string that did not fit the rest of its row, in order; what is left of it starts at mPendingNext.
    std::array<std::uint8_t, km_TableSize> mPending{};
    std::uint32_t mPendingNext = 0;
    std::uint32_t mPendingEnd = 0;
};
