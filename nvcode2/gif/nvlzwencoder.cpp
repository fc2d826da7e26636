#include "nvcode2/gif/nvlzwencoder.h"

#include <algorithm>
#include <cstddef>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nvbytes.h"
#include "nvcode2/file/nvfilewriter.h"
#include "nvcode2/gif/nvlzwstringtable.h"

LZWEncoder::LZWEncoder(NvFileWriter& inWriter) : mWriter(inWriter) {}

void LZWEncoder::Begin(std::uint8_t inMinimumCodeSize, const NvLZWStrings* inStrings) {
    NvAssert(1 <= inMinimumCodeSize && inMinimumCodeSize <= 8);
    const std::uint32_t pixelBits = std::max<std::uint32_t>(inMinimumCodeSize, 2);
    mWriter.WriteByte(static_cast<std::uint8_t>(pixelBits));
    mTable.emplace();

    mClearCode = 1U << pixelBits;
    mEndCode = mClearCode + 1;
    mInitialCodeSize = mCodeSize = pixelBits + 1;
    mAccumulator = mBitCount = mBlockLength = 0;
    mPrefix = km_NoPrefix;
    mStrings = inStrings;
    mString = 0;
    mStringLeft = 0;
    ResetTable();
    WriteCode(mClearCode);
}

void LZWEncoder::EncodeRows(const std::uint8_t* inPixels, std::uint32_t inWidth, std::uint32_t inRows,
                            std::uint32_t inStride) {
    for (std::uint32_t row = 0; row < inRows; ++row) {
        const std::uint8_t* pixels = inPixels + std::size_t{row} * inStride;
        if (mStrings)
            EncodeGivenStrings(pixels, inWidth);
        else
            EncodeRow(pixels, inWidth);
    }
}

void LZWEncoder::EncodeRow(const std::uint8_t* inPixels, std::uint32_t inCount) {
    if (inCount == 0)
        return;
    NvLZWStringTable& table = *mTable;
    std::uint32_t prefix = mPrefix;
    std::uint32_t next = 0;
    if (prefix == km_NoPrefix)
        next = table.FindRun(inPixels, inCount, prefix);
    while (next < inCount) {
        const std::uint32_t pixel = inPixels[next];
        table.Prefetch(pixel, inPixels[std::min(next + 1, inCount - 1)]);
        if (const std::uint32_t code = table.Find(prefix, pixel)) {
            prefix = code;
            ++next;
            continue;
        }
        table.Add(prefix, pixel, mNextCode++);
        WriteCode(prefix);
        if (mNextCode == mLimit)
            GrowOrReset();
        next += table.FindRun(inPixels + next, inCount - next, prefix);
    }
    mPrefix = prefix;
}

void LZWEncoder::EncodeGivenStrings(const std::uint8_t* inPixels, std::uint32_t inCount) {
    const NvLZWStringTable& table = *mTable;
    for (std::uint32_t x = 0; x < inCount; ++x) {
        if (mStringLeft == 0) {
            EndGivenString(inPixels[x]);
            continue;
        }
        mPrefix = table.Find(mPrefix, inPixels[x]);
        NvAssert(mPrefix != 0);
        --mStringLeft;
    }
}

// A string that ended early may be in the table already with the pixel behind it. Decoders add it again, so a
// code is spent on it all the same. A full table goes on being used.
void LZWEncoder::EndGivenString(std::uint8_t inNextPixel) {
    if (mPrefix != km_NoPrefix) {
        NvLZWStringTable& table = *mTable;
        WriteCode(mPrefix);
        if (mNextCode < NvLZWStringTable::km_MaxCodes) {
            if (table.Find(mPrefix, inNextPixel) == 0)
                table.Add(mPrefix, inNextPixel, mNextCode);
            if (++mNextCode == mLimit && mCodeSize < km_MaxCodeSize)
                GrowOrReset();
        }
        if ((*mStrings)[mString++].mClears) {
            ResetTable();
            WriteCode(mClearCode);
        }
    }
    NvAssert(mString < mStrings->size());
    mPrefix = inNextPixel;
    mStringLeft = (*mStrings)[mString].mLength - 1;
}

// A full table is emptied at once.
void LZWEncoder::GrowOrReset() {
    if (mCodeSize < km_MaxCodeSize) {
        ++mCodeSize;
        mLimit <<= 1;
    } else {
        ResetTable();
        WriteCode(mClearCode);
    }
}

void LZWEncoder::End() {
    if (mPrefix != km_NoPrefix)
        WriteCode(mPrefix);
    WriteCode(mEndCode);
    StoreBits((mBitCount + 7) / 8);
    if (mBlockLength > 0)
        WriteBlock(mBlockLength);
    mWriter.WriteByte(0);
    mPrefix = km_NoPrefix;
    mTable.reset();
}

// The clear code that follows a full table still takes the full table's width: decoders switch back after it.
void LZWEncoder::ResetTable() {
    mWriteSize = mCodeSize;
    NvLZWStringTable& table = *mTable;
    table.Clear();
    mNextCode = mEndCode + 1;
    mCodeSize = mInitialCodeSize;
    mLimit = 1U << mCodeSize;
}

// A decoder assigns each code one step after the encoder, so a new width takes hold one code late.
inline void LZWEncoder::WriteCode(std::uint32_t inCode) {
    mAccumulator |= std::uint64_t{inCode} << mBitCount;
    mBitCount += mWriteSize;
    mWriteSize = mCodeSize;
    if (mBitCount >= 8 * km_StoredBytes)
        StoreBits(km_StoredBytes);
}

// Moves bytes from the accumulator to the block, and the block on when it is full.
void LZWEncoder::StoreBits(std::uint32_t inBytes) {
    NvStoreLittleEndian(&mBlock[mBlockLength], mAccumulator); // eight at once, however many count
    mAccumulator >>= 8 * inBytes;
    mBitCount -= std::min(mBitCount, 8 * inBytes);
    mBlockLength += inBytes;
    if (mBlockLength >= km_BlockSize)
        WriteBlock(km_BlockSize);
}

void LZWEncoder::WriteBlock(std::uint32_t inLength) {
    mWriter.WriteByte(static_cast<std::uint8_t>(inLength));
    mWriter.Write(mBlock.data(), inLength);
    mBlockLength -= inLength;
    std::copy_n(mBlock.data() + inLength, mBlockLength, mBlock.data());
}
