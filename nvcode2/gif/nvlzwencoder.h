#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "nvcode2/gif/nvlentstringtable.h"
#include "nvcode2/gif/nvlzwstrings.h"

class NvFileWriter;

/** GIF's variable-width LZW compression: rows of colour indices in, data sub-blocks out.
 *
 *  Order of calls for one frame: Begin, EncodeRows once or more (once per interlace pass), End. The encoder
 *  may be used again for the next frame. Codes are at most 12 bits. Each code stands for the longest string
 * that the table holds, and when code 4095 has been assigned the table is emptied at once and a clear code
 *  written, never later; unless the strings are given, which then decide both.
 *
 *  After T. A. Welch, "A Technique for High-Performance Data Compression", 1984, as the GIF format uses it.
 */
class LZWEncoder {
public:
    /** @param inWriter  borrowed for the encoder's life */
    explicit LZWEncoder(NvFileWriter& inWriter);

    /** Writes the code size byte and the first clear code.
     *  @param inMinimumCodeSize  1 to 8, the bits that hold the highest index; 1 is raised to 2, the least
     *  that GIF allows
     *  @param inStrings          how the frame is cut, borrowed until End; null for the longest strings */
    void Begin(std::uint8_t inMinimumCodeSize, const NvLZWStrings* inStrings = nullptr);

    /** Encodes a block of rows, continuing the stream of earlier calls.
     *  @param inPixels  first pixel of the first row, one byte each, every one below 2^(minimum code size)
     *  @param inWidth   pixels per row
     *  @param inRows    number of rows
     *  @param inStride  bytes from one row to the next */
    void EncodeRows(const std::uint8_t* inPixels, std::uint32_t inWidth, std::uint32_t inRows,
                    std::uint32_t inStride);

    /** Writes what is pending, the end code and the block terminator. */
    void End();

private:
    void EncodeRow(const std::uint8_t* inPixels, std::uint32_t inCount);
    void EncodeGivenStrings(const std::uint8_t* inPixels, std::uint32_t inCount);
    void EndGivenString(std::uint8_t inNextPixel);
    void GrowOrReset();
    void ResetTable();
    void WriteCode(std::uint32_t inCode);
    void StoreBits(std::uint32_t inBytes);
    void WriteBlock(std::uint32_t inLength);

    static constexpr std::uint32_t km_NoPrefix = 0xFFFF;
    static constexpr std::uint32_t km_MaxCodeSize = 12; // bits
    static constexpr std::uint32_t km_BlockSize = 255;  // bytes
    static constexpr std::uint32_t km_StoredBytes = 6;  // that leave the accumulator together

    NvFileWriter& mWriter;
    std::optional<NvLentStringTable> mTable; // from Begin to End
    std::uint32_t mInitialCodeSize = 0;      // bits
    std::uint32_t mCodeSize = 0;             // bits, as decided by the number of codes assigned
    std::uint32_t mWriteSize = 0; // bits of the next code written; follows mCodeSize one code later
    std::uint32_t mClearCode = 0;
    std::uint32_t mEndCode = 0;
    std::uint32_t mNextCode = 0;         // next code to assign
    std::uint32_t mLimit = 0;            // 2^mCodeSize
    std::uint32_t mPrefix = km_NoPrefix; // code of the string matched so far
    const NvLZWStrings* mStrings = nullptr;
    std::size_t mString = 0;        // in hand, of the given ones
    std::uint32_t mStringLeft = 0;  // pixels that it still lacks
    std::uint64_t mAccumulator = 0; // bits not yet in the block, the oldest lowest
    std::uint32_t mBitCount = 0;    // bits in mAccumulator, below 8 * km_StoredBytes between codes
    std::array<std::uint8_t, km_BlockSize + 8> mBlock{}; // data bytes of the next sub-block
    std::uint32_t mBlockLength = 0;
};
