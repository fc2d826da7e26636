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
    static constexpr std::uint32_t km_MaxCodeSize = 12; // bits
    static constexpr std::uint32_t km_TableSize =
        4097; // one more than 12 bits can name; the last is never read
    static constexpr std::uint32_t km_MaxRoot = 255;
    static constexpr std::uint32_t km_TailSize = 8;      // pixels
    static constexpr std::uint32_t km_WindowSize = 8192; // pixels; 4096 to 32768 do not differ by 2 %

    /** The string of a code, its last 1 to 8 pixels at hand: those from the last multiple of 8 on. Strings
     * are so expanded in steps of eight pixels, and a string that is one pixel longer than another takes over
     * either its tail or its code.
     *
     *  Length 0 marks a string that can never be expanded, because its prefix was not defined when it was
     *  added. */
    struct String {
        std::uint64_t mTail = 0;   // the first pixel first in memory, zeros behind the last
        std::uint16_t mPrefix = 0; // code of what stands before the tail
        std::uint16_t mLength = 0; // pixels
        std::uint8_t mFirst = 0;   // pixel
    };

    static constexpr std::uint32_t km_NoString = UINT32_MAX;

    /** What changes with every code. */
    struct State {
        std::uint32_t mCodeSize = 0;                 // bits
        std::uint32_t mNextCode = 0;                 // to be defined; stops at km_TableSize
        std::uint32_t mPreviousCode = 0;             // decoded last: the next new string begins with it
        std::uint32_t mPreviousFirst = 0;            // its first pixel
        std::uint32_t mPreviousLength = km_NoString; // pixels; 0: not defined; km_NoString: after a clear
    };

    /** Bits read from sub-blocks and not taken yet, the next code's lowest. */
    struct BitBuffer {
        std::uint64_t mBits = 0; // above the count: bits of the byte at mBlockNext, or 0
        std::uint32_t mCount = 0;
    };

    std::uint64_t DecodeRow(std::uint8_t* outRow, std::uint64_t inLength, std::uint64_t inWanted);
    void FillWindow(std::uint32_t inWanted);
    std::uint32_t ReadCode(BitBuffer& ioBits, std::uint32_t inCodeSize);
    BitBuffer Refill(BitBuffer inBits, std::uint32_t inCodeSize);
    bool ReadBlock();
    void AddString(State& ioState, std::uint32_t inPixel);
    void Expand(const String& inString, std::uint8_t* outPixels) const;

    NvFileReader& mReader;
    std::uint32_t mMinimumCodeSize = 0; // bits
    std::uint32_t mClearCode = 0;
    std::uint32_t mEndCode = 0;
    bool mHasEnded = false;
    State mState;
    std::array<String, km_TableSize> mStrings{};

    BitBuffer mBits;
    std::array<std::uint8_t, 255> mBlock{};
    std::uint32_t mBlockNext = 0;
    std::uint32_t mBlockEnd = 0;

    // Pixels decoded and not yet delivered lie from mWindowNext to mWindowEnd. Behind the window there is
    // room for a longest string that begins in its last place, and for what expanding writes beyond it.
    std::array<std::uint8_t, km_WindowSize + km_TableSize + km_TailSize> mWindow{};
    std::uint32_t mWindowNext = 0;
    std::uint32_t mWindowEnd = 0;
};
