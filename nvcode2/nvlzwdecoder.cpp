#include "nvcode2/nvlzwdecoder.h"

#include <algorithm>
#include <cstring>

#include "nvcode2/nvassert.h"
#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvfilereader.h"

/** Where the next pixel goes. */
class LZWDecoder::RowCursor {
public:
    RowCursor(std::uint8_t* outPixels, std::uint32_t inWidth, std::uint32_t inRows, std::uint32_t inStride)
        : mRow(outPixels), mWidth(inWidth), mRowsLeft(inWidth > 0 ? inRows : 0), mStride(inStride) {}

    bool IsFull() const { return mRowsLeft == 0; }
    std::uint32_t RoomInRow() const { return mWidth - mColumn; }
    std::uint8_t* Position() const { return mRow + mColumn; }
    std::uint64_t Delivered() const { return mDelivered; }

    /** Moves on after inCount pixels were stored at Position(); inCount <= RoomInRow(). */
    void Advance(std::uint32_t inCount) {
        mDelivered += inCount;
        mColumn += inCount;
        if (mColumn == mWidth) {
            mColumn = 0;
            if (--mRowsLeft > 0)
                mRow += mStride;
        }
    }

private:
    std::uint8_t* mRow;
    std::uint32_t mWidth;
    std::uint32_t mColumn = 0;
    std::uint32_t mRowsLeft;
    std::uint32_t mStride;
    std::uint64_t mDelivered = 0;
};

LZWDecoder::LZWDecoder(NvFileReader& inReader) : mReader(inReader) {}

void LZWDecoder::Begin() {
    mMinimumCodeSize = mReader.ReadByte();
    if (mMinimumCodeSize < 1 || mMinimumCodeSize >= km_MaxCodeSize)
        NvThrow(NvErrorCode::km_MalformedGIF);
    mClearCode = 1U << mMinimumCodeSize;
    mEndCode = mClearCode + 1;
    for (std::uint32_t root = 0; root < mClearCode; ++root) {
        mLength[root] = root <= km_MaxRoot ? 1 : 0;
        mFirst[root] = mSuffix[root] = static_cast<std::uint8_t>(root);
    }
    mLength[mClearCode] = mLength[mEndCode] = 0;
    ResetTable();
    mHasEnded = false;
    mBlockNext = mBlockEnd = 0;
    mAccumulator = 0;
    mBitCount = 0;
    mPendingNext = mPendingEnd = 0;
}

std::uint64_t LZWDecoder::DecodeRows(std::uint8_t* outPixels, std::uint32_t inWidth, std::uint32_t inRows,
                                     std::uint32_t inStride) {
    RowCursor cursor(outPixels, inWidth, inRows, inStride);
    DeliverPending(cursor);
    while (!cursor.IsFull() && !mHasEnded) {
        const std::uint32_t code = ReadCode();
        if (code == mEndCode)
            mHasEnded = true;
        else if (code == mClearCode)
            ResetTable();
        else if (mPreviousCode == mClearCode)
            StartString(code, cursor);
        else
            ContinueString(code, cursor);
    }
    if (mMinimumCodeSize == 1 && !cursor.IsFull())
        NvThrow(NvErrorCode::km_MalformedGIF);
    return cursor.Delivered();
}

void LZWDecoder::End() {
    if (mMinimumCodeSize > 1 || mHasEnded)
        return;
    if (mPendingNext < mPendingEnd || ReadCode() != mEndCode)
        NvThrow(NvErrorCode::km_MalformedGIF);
}

std::uint32_t LZWDecoder::ReadCode() {
    while (mBitCount < mCodeSize) {
        if (mBlockNext == mBlockEnd && !ReadBlock())
            return mEndCode;
        while (mBitCount <= 56 && mBlockNext < mBlockEnd) {
            mAccumulator |= static_cast<std::uint64_t>(mBlock[mBlockNext++]) << mBitCount;
            mBitCount += 8;
        }
    }
    const std::uint32_t code = static_cast<std::uint32_t>(mAccumulator) & (mMaxCode - 1);
    NvAssertText(code < mMaxCode, "code < decode->maxCode");
    mAccumulator >>= mCodeSize;
    mBitCount -= mCodeSize;
    return code;
}

// An empty sub-block ends the data; it is not passed over again, however often a code is asked for.
bool LZWDecoder::ReadBlock() {
    if (mHasEnded)
        return false;
    mBlockNext = 0;
    mBlockEnd = mReader.ReadByte();
    mReader.Read(mBlock.data(), mBlockEnd);
    mHasEnded = mBlockEnd == 0;
    return !mHasEnded;
}

void LZWDecoder::ResetTable() {
    mCodeSize = mMinimumCodeSize + 1;
    mMaxCode = 1U << mCodeSize;
    mNextCode = mEndCode + 1;
    mPreviousCode = mClearCode;
}

// The first string after a clear code is a single pixel and adds nothing to the table.
void LZWDecoder::StartString(std::uint32_t inRoot, RowCursor& ioCursor) {
    if (inRoot > mClearCode || inRoot > km_MaxRoot)
        NvThrow(NvErrorCode::km_MalformedGIF);
    *ioCursor.Position() = static_cast<std::uint8_t>(inRoot);
    ioCursor.Advance(1);
    mPreviousCode = mPreviousFirst = inRoot;
}

void LZWDecoder::ContinueString(std::uint32_t inCode, RowCursor& ioCursor) {
    if (inCode < mNextCode) {
        if (mLength[inCode] == 0)
            NvThrow(NvErrorCode::km_MalformedGIF);
        const std::uint32_t first = mFirst[inCode];
        Deliver(inCode, ioCursor);
        AddString(mPreviousCode, first);
        mPreviousFirst = first;
    } else {
        // The encoder used a string the moment it was made: the previous one and its own first pixel.
        const std::uint32_t newCode = mNextCode;
        AddString(mPreviousCode, mPreviousFirst);
        if (mLength[newCode] == 0)
            NvThrow(NvErrorCode::km_MalformedGIF);
        Deliver(newCode, ioCursor);
    }
    mPreviousCode = inCode;
}

// A full table stays as it is until the next clear code; entry 4096 exists only to be counted.
void LZWDecoder::AddString(std::uint32_t inPrefix, std::uint32_t inSuffix) {
    if (mNextCode >= km_TableSize)
        return;
    const bool prefixIsDefined = inPrefix < mNextCode && mLength[inPrefix] > 0;
    mPrefix[mNextCode] = static_cast<std::uint16_t>(inPrefix);
    mSuffix[mNextCode] = static_cast<std::uint8_t>(inSuffix);
    mFirst[mNextCode] = static_cast<std::uint8_t>(mPreviousFirst);
    mLength[mNextCode] =
        prefixIsDefined ? static_cast<std::uint16_t>(mLength[inPrefix] + 1) : std::uint16_t{0};
    ++mNextCode;
    if (mNextCode >= mMaxCode && mCodeSize < km_MaxCodeSize) {
        ++mCodeSize;
        mMaxCode <<= 1;
    }
}

// Strings are known by their last pixel first; knowing their length they can be stored in place all the same.
void LZWDecoder::Deliver(std::uint32_t inCode, RowCursor& ioCursor) {
    const std::uint32_t length = mLength[inCode];
    if (length <= ioCursor.RoomInRow()) {
        ExpandBackwards(inCode, ioCursor.Position() + length);
        ioCursor.Advance(length);
        return;
    }
    ExpandBackwards(inCode, mPending.data() + length);
    mPendingNext = 0;
    mPendingEnd = length;
    DeliverPending(ioCursor);
}

std::uint8_t* LZWDecoder::ExpandBackwards(std::uint32_t inCode, std::uint8_t* outEnd) const {
    while (inCode >= mClearCode) {
        *--outEnd = mSuffix[inCode];
        inCode = mPrefix[inCode];
    }
    *--outEnd = static_cast<std::uint8_t>(inCode);
    return outEnd;
}

void LZWDecoder::DeliverPending(RowCursor& ioCursor) {
    while (mPendingNext < mPendingEnd && !ioCursor.IsFull()) {
        const std::uint32_t piece = std::min(mPendingEnd - mPendingNext, ioCursor.RoomInRow());
        std::memcpy(ioCursor.Position(), mPending.data() + mPendingNext, piece);
        ioCursor.Advance(piece);
        mPendingNext += piece;
    }
}
