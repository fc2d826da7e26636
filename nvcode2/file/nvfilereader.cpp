#include "nvcode2/file/nvfilereader.h"

#include <algorithm>
#include <cstring>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/file/nvfile.h"

namespace {
constexpr std::uint32_t km_BufferSize = 32768;
}

NvFileReader::NvFileReader(NvFile& inFile)
    : mFile(inFile), mBuffer(NvMakeArray<std::uint8_t>(km_BufferSize)) {}

void NvFileReader::Seek(std::uint32_t inPosition) {
    if (mIsPlaced && inPosition >= mBufferStart && inPosition - mBufferStart <= mEnd) {
        mNext = inPosition - mBufferStart;
        return;
    }
    mFile.Seek(NvFile::km_FromStart, static_cast<std::int32_t>(inPosition));
    mBufferStart = inPosition;
    mNext = mEnd = 0;
    mIsPlaced = true;
}

void NvFileReader::Reset() {
    mIsPlaced = false;
    mBufferStart = mNext = mEnd = 0;
}

bool NvFileReader::IsAtEnd() const {
    return mNext == mEnd && GetPosition() >= mFile.GetLength();
}

std::uint32_t NvFileReader::GetPosition() const {
    return mBufferStart + mNext;
}

std::uint16_t NvFileReader::ReadWord() {
    const unsigned low = ReadByte();
    const unsigned high = ReadByte();
    return static_cast<std::uint16_t>(low | (high << 8));
}

void NvFileReader::Read(void* outBytes, std::uint32_t inCount) {
    auto* bytes = static_cast<std::uint8_t*>(outBytes);
    while (inCount > 0) {
        if (mNext == mEnd)
            Refill();
        const std::uint32_t piece = std::min(inCount, mEnd - mNext);
        std::memcpy(bytes, mBuffer.get() + mNext, piece);
        mNext += piece;
        bytes += piece;
        inCount -= piece;
    }
}

void NvFileReader::Skip(std::uint32_t inCount) {
    while (inCount > 0) {
        if (mNext == mEnd)
            Refill();
        const std::uint32_t piece = std::min(inCount, mEnd - mNext);
        mNext += piece;
        inCount -= piece;
    }
}

void NvFileReader::SkipSubBlocks() {
    while (const std::uint8_t length = ReadByte())
        Skip(length);
}

void NvFileReader::Refill() {
    mBufferStart += mEnd;
    mNext = mEnd = 0;
    mEnd = mFile.Read(mBuffer.get(), km_BufferSize);
}
