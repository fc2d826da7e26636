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
 *  - a code beyond the next free one, which is read as the next free one; players differ in what they make of
 *  it, so MetUndefinedCode reports it;
 *  - sub-blocks that end without an end code: the result of DecodeRows says how many pixels arrived;
 *  - a minimum code size of 1, when the stream yields exactly the frame's pixels. */
class LZWDecoder {
public:
    /** @param inReader  borrowed for the decoder's life; positioned by the caller at the minimum code size
     *  byte */
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

    /** Whether a code beyond the next free one was read since Begin. */
    bool MetUndefinedCode() const { return mMetUndefinedCode; }

    /** Reads on behind the rows that were asked for, up to the end code, the end of the data or a pixel.
     *  @return             whether there is a pixel
     *  @throws NvErrorCode 18 when the file ends inside the stream */
    bool RunsOver();

    /** Ends the frame. What the stream holds beyond the frame's pixels is ignored, but with a minimum code
     *  size of 1.
     *  @throws NvErrorCode  28 when a stream of minimum code size 1 continues */
    void End();

private:
    static constexpr std::uint32_t km_MaxCodeSize = 12; // bits
    static constexpr std::uint32_t km_MaxCodes = 1U << km_MaxCodeSize;
    static constexpr std::uint32_t km_Roots = 256;
    static constexpr std::uint32_t km_TailSize = 8;      // pixels
    static constexpr std::uint32_t km_WindowSize = 8192; // pixels; 4096 to 32768 do not differ by 2 %

    /** What a code stands for. Of its string the last 1 to 8 pixels are at hand, those from the last multiple
     *  of 8 on. Strings are so expanded in steps of eight pixels, and a string that is one pixel longer than
     *  another takes over either its tail or its code. */
    struct String {
        std::uint64_t mTail; // the first pixel first in memory, zeros behind the last

        // Loaded and stored at once, from the lowest bits on: eight times the length in pixels, 16 bits; the
        // code of what stands before the tail, 16 bits; the first pixel in the highest 8.
        std::uint64_t mRest;

        /** The length of what is none: clear and end code, codes not defined yet, and strings whose prefix
         *  was not defined when they were added. No string is that long. */
        static constexpr std::uint32_t km_Undefined = km_MaxCodes + 1;

        static constexpr String Undefined() { return {0, 8 * km_Undefined}; }

        static constexpr std::uint32_t km_OneLonger = 8;
        static constexpr std::uint32_t km_FirstShift = 56;

        static std::uint64_t RestOfRoot(std::uint64_t inPixel) {
            return inPixel << km_FirstShift | km_OneLonger;
        }
        std::uint64_t RestBehind(std::uint32_t inPrefix) const {
            return (mRest & ~std::uint64_t{0xFFFF0000}) | inPrefix << 16;
        }
        std::uint32_t GetBits() const { return static_cast<std::uint16_t>(mRest); }
        std::uint32_t GetPrefix() const { return static_cast<std::uint32_t>(mRest) >> 16; }
    };

    /** What changes with every code. */
    struct State {
        std::uint32_t mCodeSize = 0;     // bits
        std::uint32_t mLimit = 0;        // of mNextCode, where codes grow or the table is full
        std::uint32_t mNextCode = 0;     // to be defined; stays at km_MaxCodes; 0 before the first string
        std::uint32_t mPreviousCode = 0; // decoded last: the next new string begins with it
        String mPrevious = String::Undefined(); // its string
    };

    /** Bits read from sub-blocks and not taken yet, the next code's lowest. */
    struct BitBuffer {
        std::uint64_t mBits = 0; // above the count: bits of the byte at mBlockNext, or 0
        std::uint32_t mCount = 0;
    };

    std::uint64_t DecodeRow(std::uint8_t* outRow, std::uint64_t inLength, std::uint64_t inWanted);
    void FillWindow(std::uint32_t inWanted);
    bool DecodeString(State& ioState, std::uint32_t inCode, std::uint8_t*& ioOut);
    void Grow(State& ioState);
    [[gnu::noinline]] void MakeStringsReady(std::uint32_t inCodeSize);
    std::uint8_t* DecodeNoString(std::uint32_t inCode, std::uint8_t* outPixels);
    std::uint8_t* DecodeFirst(std::uint8_t* outPixels);
    void Expand(String inString, std::uint8_t* outPixels) const;
    std::uint32_t ReadCode(BitBuffer& ioBits, std::uint32_t inCodeSize);
    /** Cuts the next code out of the buffer. It is masked to inCodeSize bits, so the assertion
     *  "code < decode->maxCode" could never fail. */
    static std::uint32_t TakeCode(BitBuffer& ioBits, std::uint32_t inCodeSize);
    BitBuffer Refill(BitBuffer inBits, std::uint32_t inCodeSize);
    BitBuffer RefillAtBlockEnd(BitBuffer inBits, std::uint32_t inCodeSize);
    bool ReadBlock();

    NvFileReader& mReader;
    std::uint32_t mMinimumCodeSize = 0; // bits
    std::uint32_t mClearCode = 0;
    std::uint32_t mEndCode = 0;
    bool mHasEnded = false;
    bool mMetUndefinedCode = false;
    State mState;
    // Only as many are set as codes can name, and as many again: small pictures use few.
    std::array<String, km_MaxCodes + 1> mStrings; // NOLINT(cppcoreguidelines-pro-type-member-init)
    std::uint32_t mReadyStrings = 0;

    BitBuffer mBits;
    std::array<std::uint8_t, 255> mBlock{};
    std::uint32_t mBlockNext = 0;
    std::uint32_t mBlockEnd = 0;

    // Pixels decoded and not yet delivered lie from mWindowNext to mWindowEnd. Behind the window there is
    // room for a longest string that begins in its last place, and for what expanding writes beyond it.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): what is read has been decoded
    std::array<std::uint8_t, km_WindowSize + km_MaxCodes + km_TailSize> mWindow;
    std::uint32_t mWindowNext = 0;
    std::uint32_t mWindowEnd = 0;
};
