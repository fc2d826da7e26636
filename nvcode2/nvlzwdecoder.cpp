#include "nvcode2/nvlzwdecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "nvcode2/nvassert.h"
#include "nvcode2/nvbytes.h"
#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvfilereader.h"

namespace {

/** A pixel in its place of eight, so that the first lies first in memory. */
std::uint64_t InPlace(std::uint32_t inPixel, std::uint32_t inPlace) {
    const std::uint32_t place = std::endian::native == std::endian::little ? inPlace : 7 - inPlace;
    return std::uint64_t{inPixel} << (8 * place);
}

} // namespace

LZWDecoder::LZWDecoder(NvFileReader& inReader) : mReader(inReader) {}

void LZWDecoder::Begin() {
    mMinimumCodeSize = mReader.ReadByte();
    if (mMinimumCodeSize < 1 || mMinimumCodeSize >= km_MaxCodeSize)
        NvThrow(NvErrorCode::km_MalformedGIF);
    mClearCode = 1U << mMinimumCodeSize;
    mEndCode = mClearCode + 1;
    for (std::uint32_t root = 0; root < mClearCode; ++root) {
        mStrings[root] = String();
        if (root <= km_MaxRoot)
            mStrings[root] = {InPlace(root, 0), 0, 1, static_cast<std::uint8_t>(root)};
    }
    mState = State{mMinimumCodeSize + 1, mEndCode + 1};
    mBits = BitBuffer();
    mBlockNext = mBlockEnd = 0;
    mHasEnded = false;
    mWindowNext = mWindowEnd = 0;
}

std::uint64_t LZWDecoder::DecodeRows(std::uint8_t* outPixels, std::uint32_t inWidth, std::uint32_t inRows,
                                     std::uint32_t inStride) {
    // Rows without a gap between them are one long row.
    const bool isContiguous = inStride == inWidth;
    const std::uint64_t rowLength = isContiguous ? std::uint64_t{inWidth} * inRows : inWidth;
    const std::uint32_t rows = isContiguous ? 1 : inRows;
    std::uint64_t wanted = std::uint64_t{inWidth} * inRows;
    std::uint64_t delivered = 0;
    for (std::uint32_t row = 0; row < rows; ++row) {
        const std::uint64_t arrived = DecodeRow(outPixels + std::size_t{row} * inStride, rowLength, wanted);
        wanted -= arrived;
        delivered += arrived;
        if (arrived < rowLength)
            break;
    }
    if (mMinimumCodeSize == 1 && wanted > 0)
        NvThrow(NvErrorCode::km_MalformedGIF);
    return delivered;
}

// inWanted is what all rows asked for still lack: the window is filled for all of them, but never further, so
// that nothing behind a frame's last pixel is looked at.
std::uint64_t LZWDecoder::DecodeRow(std::uint8_t* outRow, std::uint64_t inLength, std::uint64_t inWanted) {
    std::uint64_t delivered = 0;
    while (delivered < inLength) {
        if (mWindowNext == mWindowEnd)
            FillWindow(
                static_cast<std::uint32_t>(std::min<std::uint64_t>(inWanted - delivered, km_WindowSize)));
        const std::uint64_t piece = std::min<std::uint64_t>(mWindowEnd - mWindowNext, inLength - delivered);
        if (piece == 0)
            break;
        std::memcpy(outRow + delivered, mWindow.data() + mWindowNext, piece);
        mWindowNext += static_cast<std::uint32_t>(piece);
        delivered += piece;
    }
    return delivered;
}

void LZWDecoder::End() {
    if (mMinimumCodeSize > 1 || mHasEnded)
        return;
    if (mWindowNext < mWindowEnd || ReadCode(mBits, mState.mCodeSize) != mEndCode)
        NvThrow(NvErrorCode::km_MalformedGIF);
}

// Decodes whole strings until the window holds as many pixels as are wanted, or more, or the data end. The
// loop works on copies that the compiler can keep in registers; every pixel stored into the window could
// otherwise be a part of the originals.
void LZWDecoder::FillWindow(std::uint32_t inWanted) {
    std::uint8_t* out = mWindow.data();
    const std::uint8_t* const end = out + inWanted;
    BitBuffer bits = mBits;
    State state = mState;
    while (out < end && !mHasEnded) {
        const std::uint32_t code = ReadCode(bits, state.mCodeSize);
        if (code == mEndCode) {
            mHasEnded = true;
        } else if (code == mClearCode) {
            state = State{mMinimumCodeSize + 1, mEndCode + 1};
        } else if (state.mPreviousLength == km_NoString) {
            // The first string after a clear code is a single pixel and adds nothing to the table.
            if (code > mClearCode || code > km_MaxRoot)
                NvThrow(NvErrorCode::km_MalformedGIF);
            *out++ = static_cast<std::uint8_t>(code);
            state.mPreviousCode = state.mPreviousFirst = code;
            state.mPreviousLength = 1;
        } else {
            // A code not defined yet: the encoder used a string the moment it was made, which is the previous
            // one and its own first pixel.
            const std::uint32_t newCode = state.mNextCode;
            const std::uint32_t first = code < newCode ? mStrings[code].mFirst : state.mPreviousFirst;
            if (newCode < km_TableSize)
                AddString(state, first);
            const String& string = mStrings[std::min(code, newCode)];
            const std::uint32_t length = string.mLength;
            if (length == 0)
                NvThrow(NvErrorCode::km_MalformedGIF);
            Expand(string, out);
            out += length;
            state.mPreviousCode = code;
            state.mPreviousFirst = first;
            state.mPreviousLength = code <= newCode ? length : 0;
        }
    }
    mBits = bits;
    mState = state;
    mWindowNext = 0;
    mWindowEnd = static_cast<std::uint32_t>(out - mWindow.data());
}

inline std::uint32_t LZWDecoder::ReadCode(BitBuffer& ioBits, std::uint32_t inCodeSize) {
    if (ioBits.mCount < inCodeSize) {
        ioBits = Refill(ioBits, inCodeSize);
        if (ioBits.mCount < inCodeSize)
            return mEndCode;
    }
    const std::uint32_t maxCode = 1U << inCodeSize;
    const std::uint32_t code = static_cast<std::uint32_t>(ioBits.mBits) & (maxCode - 1);
    NvAssertText(code < maxCode, "code < decode->maxCode");
    ioBits.mBits >>= inCodeSize;
    ioBits.mCount -= inCodeSize;
    return code;
}

// Takes up as many whole bytes as there is room for; at the end of a sub-block, what the next code needs. The
// result holds less only when the data end.
LZWDecoder::BitBuffer LZWDecoder::Refill(BitBuffer inBits, std::uint32_t inCodeSize) {
    if (mBlockEnd - mBlockNext >= 8) {
        inBits.mBits |= NvLoadLittleEndian(&mBlock[mBlockNext]) << inBits.mCount;
        mBlockNext += (63 - inBits.mCount) / 8;
        inBits.mCount |= 56;
        return inBits;
    }
    while (inBits.mCount < inCodeSize) {
        if (mBlockNext == mBlockEnd && !ReadBlock())
            break;
        inBits.mBits |= std::uint64_t{mBlock[mBlockNext++]} << inBits.mCount;
        inBits.mCount += 8;
    }
    return inBits;
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

// The new string is the previous one and a pixel. A full table stays as it is until the next clear code;
// entry 4096 exists only to be counted.
inline void LZWDecoder::AddString(State& ioState, std::uint32_t inPixel) {
    const std::uint32_t code = ioState.mNextCode++;
    const String& prefix = mStrings[ioState.mPreviousCode];
    const std::uint32_t place = ioState.mPreviousLength % km_TailSize;
    String& string = mStrings[code];
    string.mTail = (place == 0 ? 0 : prefix.mTail) | InPlace(inPixel, place);
    string.mPrefix = place == 0 ? static_cast<std::uint16_t>(ioState.mPreviousCode) : prefix.mPrefix;
    string.mLength = static_cast<std::uint16_t>(ioState.mPreviousLength + (ioState.mPreviousLength != 0));
    string.mFirst = static_cast<std::uint8_t>(ioState.mPreviousFirst);
    if (ioState.mNextCode >= 1U << ioState.mCodeSize && ioState.mCodeSize < km_MaxCodeSize)
        ++ioState.mCodeSize;
}

// Eight pixels at a time from the last on; up to seven places behind the string are written too.
inline void LZWDecoder::Expand(const String& inString, std::uint8_t* outPixels) const {
    std::uint8_t* place = outPixels + (inString.mLength - 1U) / km_TailSize * km_TailSize;
    std::memcpy(place, &inString.mTail, km_TailSize);
    for (const String* string = &inString; place > outPixels;) {
        string = &mStrings[string->mPrefix];
        place -= km_TailSize;
        std::memcpy(place, &string->mTail, km_TailSize);
    }
}
