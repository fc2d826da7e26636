#include "nvcode2/gif/nvlzwdecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nvbytes.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/file/nvfilereader.h"

namespace {

/** A pixel in its place of eight, so that the first lies first in memory.
 *  @param inBits  8 for each pixel before it, modulo 64 */
std::uint64_t InPlace(std::uint64_t inPixel, std::uint64_t inBits) {
    return inPixel << ((std::endian::native == std::endian::little ? inBits : 56 - inBits) % 64);
}

} // namespace

LZWDecoder::LZWDecoder(NvFileReader& inReader) : mReader(inReader) {}

void LZWDecoder::Begin() {
    mMinimumCodeSize = mReader.ReadByte();
    if (mMinimumCodeSize < 1 || mMinimumCodeSize >= km_MaxCodeSize)
        NvThrow(NvErrorCode::km_MalformedGIF);
    const std::uint32_t ofLastFrame = std::max(mState.mNextCode, mEndCode) + 1;
    std::fill_n(mStrings.begin(), ofLastFrame, String::Undefined());
    mClearCode = 1U << mMinimumCodeSize;
    mEndCode = mClearCode + 1;
    MakeStringsReady(mMinimumCodeSize + 1);
    for (std::uint32_t root = 0; root < std::min(mClearCode, km_Roots); ++root)
        mStrings[root] = {InPlace(root, 0), String::RestOfRoot(root)};
    mState = State();
    mState.mCodeSize = mMinimumCodeSize + 1;
    mBits = BitBuffer();
    mBlockNext = mBlockEnd = 0;
    mHasEnded = mMetUndefinedCode = false;
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

bool LZWDecoder::RunsOver() {
    if (mWindowNext < mWindowEnd)
        return true;
    while (!mHasEnded) {
        const std::uint32_t code = ReadCode(mBits, mState.mCodeSize);
        mHasEnded = code == mEndCode;
        if (!mHasEnded && code != mClearCode)
            return true;
        mState.mCodeSize = mMinimumCodeSize + 1;
    }
    return false;
}

void LZWDecoder::End() {
    if (mMinimumCodeSize > 1 || mHasEnded)
        return;
    if (mWindowNext < mWindowEnd || ReadCode(mBits, mState.mCodeSize) != mEndCode)
        NvThrow(NvErrorCode::km_MalformedGIF);
    mHasEnded = true;
}

// Decodes whole strings until the window holds as many pixels as are wanted, or more, or the data end. The
// loop works on copies that the compiler can keep in registers; every pixel stored into the window could
// otherwise be a part of the originals.
void LZWDecoder::FillWindow(std::uint32_t inWanted) {
    std::uint8_t* out = mWindow.data();
    if (mState.mNextCode == 0 && !mHasEnded)
        out = DecodeFirst(out);
    const std::uint8_t* const end = mHasEnded ? mWindow.data() : mWindow.data() + inWanted;
    BitBuffer bits = mBits;
    State state = mState;
    mState.mNextCode = km_MaxCodes; // strings may be left behind as far as that if reading fails
    while (out < end) {
        if (bits.mCount < state.mCodeSize) {
            bits = Refill(bits, state.mCodeSize);
            if (bits.mCount < state.mCodeSize)
                break;
        }
        const std::uint32_t code = TakeCode(bits, state.mCodeSize);
        if (DecodeString(state, code, out))
            continue;
        mBits = bits;
        mState = state;
        out = DecodeNoString(code, out);
        bits = mBits;
        state = mState;
        if (mHasEnded)
            break;
    }
    mBits = bits;
    mState = state;
    mWindowNext = 0;
    mWindowEnd = static_cast<std::uint32_t>(out - mWindow.data());
}

// Adds a string to the table, the previous one and the first pixel of this one. All but that pixel is known
// before this one is looked up, and so stored by then: this one may be the same, since an encoder can use a
// string the moment it is made.
//
// A full table stays as it is until the next clear code; the last entry takes what is not asked for any more.
inline bool LZWDecoder::DecodeString(State& ioState, std::uint32_t inCode, std::uint8_t*& ioOut) {
    String prefix = ioState.mPrevious;
    if (prefix.GetBits() % 64 == 0) [[unlikely]]
        prefix = {0, prefix.RestBehind(ioState.mPreviousCode)};
    String& added = mStrings[ioState.mNextCode];
    added.mRest = prefix.mRest + String::km_OneLonger;
    const String& found = mStrings[inCode];
    const std::uint64_t rest = found.mRest;
    added.mTail = prefix.mTail | InPlace(rest >> String::km_FirstShift, prefix.mRest);
    const String string{found.mTail, rest};

    const std::uint32_t bits = string.GetBits();
    if (bits <= 64) {
        std::memcpy(ioOut, &string.mTail, km_TailSize);
    } else {
        if (bits >= 8 * String::km_Undefined)
            return false;
        Expand(string, ioOut);
    }
    ioOut += bits / 8;
    ioState.mPrevious = string;
    ioState.mPreviousCode = inCode;
    if (++ioState.mNextCode >= ioState.mLimit)
        Grow(ioState);
    return true;
}

// With a minimum code size of 1 a string is added before codes are wide enough to name it, hence twice as
// many.
void LZWDecoder::MakeStringsReady(std::uint32_t inCodeSize) {
    const std::uint32_t wanted = std::min(2U << inCodeSize, km_MaxCodes);
    while (mReadyStrings < wanted)
        mStrings[mReadyStrings++] = String::Undefined();
}

inline void LZWDecoder::Grow(State& ioState) {
    if (ioState.mCodeSize < km_MaxCodeSize) {
        MakeStringsReady(++ioState.mCodeSize);
        ioState.mLimit = ioState.mCodeSize < km_MaxCodeSize ? 1U << ioState.mCodeSize : km_MaxCodes + 1;
    } else {
        ioState.mNextCode = km_MaxCodes;
    }
}

// The state and the bits are as they were before the code, and behind it.
std::uint8_t* LZWDecoder::DecodeNoString(std::uint32_t inCode, std::uint8_t* outPixels) {
    if (inCode == mEndCode) {
        mHasEnded = true;
        return outPixels;
    }
    if (inCode == mClearCode)
        return DecodeFirst(outPixels);
    // A code beyond the next new one is read as that, but no string can begin with it.
    if (inCode <= mState.mNextCode || !DecodeString(mState, mState.mNextCode, outPixels))
        NvThrow(NvErrorCode::km_MalformedGIF);
    mMetUndefinedCode = true;
    mState.mPrevious = String::Undefined();
    return outPixels;
}

// The first string after clear codes is a single pixel and adds nothing to the table.
std::uint8_t* LZWDecoder::DecodeFirst(std::uint8_t* outPixels) {
    const std::uint32_t firstFreeCode = mEndCode + 1;
    for (std::uint32_t code = firstFreeCode; code <= mState.mNextCode; ++code)
        mStrings[code] = String::Undefined();
    const std::uint32_t codeSize = mMinimumCodeSize + 1;
    std::uint32_t code = mClearCode;
    while (code == mClearCode)
        code = ReadCode(mBits, codeSize);
    mHasEnded = code == mEndCode;
    if (mHasEnded)
        return outPixels;
    if (code >= std::min(mClearCode, km_Roots))
        NvThrow(NvErrorCode::km_MalformedGIF);
    mState = State{codeSize, 1U << codeSize, firstFreeCode, code, mStrings[code]};
    *outPixels = static_cast<std::uint8_t>(code);
    return outPixels + 1;
}

// Eight pixels at a time from the last on; up to seven places behind the string are written too.
inline void LZWDecoder::Expand(String inString, std::uint8_t* outPixels) const {
    std::uint8_t* place = outPixels + (inString.GetBits() - 8) / 64 * km_TailSize;
    std::memcpy(place, &inString.mTail, km_TailSize);
    std::uint32_t prefix = inString.GetPrefix();
    while (place > outPixels) {
        const String& string = mStrings[prefix];
        place -= km_TailSize;
        std::memcpy(place, &string.mTail, km_TailSize);
        prefix = string.GetPrefix();
    }
}

std::uint32_t LZWDecoder::ReadCode(BitBuffer& ioBits, std::uint32_t inCodeSize) {
    ioBits = Refill(ioBits, inCodeSize);
    return ioBits.mCount < inCodeSize ? mEndCode : TakeCode(ioBits, inCodeSize);
}

inline std::uint32_t LZWDecoder::TakeCode(BitBuffer& ioBits, std::uint32_t inCodeSize) {
    const std::uint32_t code = static_cast<std::uint32_t>(ioBits.mBits) & ((1U << inCodeSize) - 1);
    ioBits.mBits >>= inCodeSize;
    ioBits.mCount -= inCodeSize;
    return code;
}

// Takes up as many whole bytes as there is room for in the sub-block, and of the next ones what the code
// needs. The result holds less only when the data end.
inline LZWDecoder::BitBuffer LZWDecoder::Refill(BitBuffer inBits, std::uint32_t inCodeSize) {
    if (mBlockEnd - mBlockNext < 8)
        return RefillAtBlockEnd(inBits, inCodeSize);
    inBits.mBits |= NvLoadLittleEndian(&mBlock[mBlockNext]) << inBits.mCount;
    mBlockNext += (63 - inBits.mCount) / 8;
    inBits.mCount |= 56;
    return inBits;
}

LZWDecoder::BitBuffer LZWDecoder::RefillAtBlockEnd(BitBuffer inBits, std::uint32_t inCodeSize) {
    while (inBits.mCount < inCodeSize || (mBlockNext < mBlockEnd && inBits.mCount < 56)) {
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
