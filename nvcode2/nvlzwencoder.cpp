#include "nvcode2/nvlzwencoder.h"

#include <algorithm>
#include <cstddef>

#include "nvcode2/nvassert.h"
#include "nvcode2/nvfilewriter.h"

LZWEncoder::LZWEncoder(NvFileWriter& inWriter) : mWriter(inWriter) {}

void LZWEncoder::Begin(std::uint8_t inMinimumCodeSize) {
    NvAssert(1 <= inMinimumCodeSize && inMinimumCodeSize <= 8);
    const std::uint32_t pixelBits = std::max<std::uint32_t>(inMinimumCodeSize, 2);
    mWriter.WriteByte(static_cast<std::uint8_t>(pixelBits));

    mClearCode = 1U << pixelBits;
    mEndCode = mClearCode + 1;
    mInitialCodeSize = mCodeSize = pixelBits + 1;
    mTable.Begin(pixelBits);
    mAccumulator = mBitCount = mBlockLength = 0;
    mPrefix = km_NoPrefix;
    ResetTable();
    WriteCode(mClearCode);
}

void LZWEncoder::EncodeRows(const std::uint8_t* inPixels, std::uint32_t inWidth, std::uint32_t inRows,
                            std::uint32_t inStride) {
    if (inWidth == 0 || inRows == 0)
        return;
    std::uint32_t column = 0;
    if (mPrefix == km_NoPrefix)
        mPrefix = inPixels[column++];
    for (std::uint32_t row = 0; row < inRows; ++row, column = 0) {
        const std::uint8_t* pixels = inPixels + std::size_t{row} * inStride;
        for (; column < inWidth; ++column) {
            const std::uint32_t pixel = pixels[column];
            if (const std::uint32_t code = mTable.Find(mPrefix, pixel)) {
                mPrefix = code;
                continue;
            }
            mTable.Add(mPrefix, pixel, mNextCode++);
            WriteCode(mPrefix);
            if (mNextCode == mLimit) {
                if (mCodeSize < km_MaxCodeSize) {
                    ++mCodeSize;
                    mLimit <<= 1;
                } else {
                    ResetTable();
                    WriteCode(mClearCode);
                }
            }
            mPrefix = pixel;
        }
    }
}

void LZWEncoder::End() {
    if (mPrefix != km_NoPrefix)
        WriteCode(mPrefix);
    WriteCode(mEndCode);
    if (mBitCount > 0)
        AppendByte(static_cast<std::uint8_t>(mAccumulator));
    if (mBlockLength > 0)
        FlushBlock();
    mWriter.WriteByte(0);
    mPrefix = km_NoPrefix;
}

// The clear code that follows a full table still takes the full table's width: decoders switch back after it.
void LZWEncoder::ResetTable() {
    mWriteSize = mCodeSize;
    mTable.Clear();
    mNextCode = mEndCode + 1;
    mCodeSize = mInitialCodeSize;
    mLimit = 1U << mCodeSize;
}

// A decoder assigns each code one step after the encoder, so a new width takes hold one code late.
void LZWEncoder::WriteCode(std::uint32_t inCode) {
    mAccumulator |= inCode << mBitCount;
    mBitCount += mWriteSize;
    mWriteSize = mCodeSize;
    while (mBitCount >= 8) {
        AppendByte(static_cast<std::uint8_t>(mAccumulator));
        mAccumulator >>= 8;
        mBitCount -= 8;
    }
}

void LZWEncoder::AppendByte(std::uint8_t inByte) {
    mBlock[mBlockLength++] = inByte;
    if (mBlockLength == mBlock.size())
        FlushBlock();
}

void LZWEncoder::FlushBlock() {
    mWriter.WriteByte(static_cast<std::uint8_t>(mBlockLength));
    mWriter.Write(mBlock.data(), mBlockLength);
    mBlockLength = 0;
}
