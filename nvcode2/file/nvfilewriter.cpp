#include "nvcode2/file/nvfilewriter.h"

#include <algorithm>
#include <cstring>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/file/nvfile.h"

NvFileWriter::NvFileWriter(NvFile& inFile) : mFile(inFile) {}

void NvFileWriter::WriteWord(std::uint16_t inWord) {
    WriteByte(static_cast<std::uint8_t>(inWord & 0xFF));
    WriteByte(static_cast<std::uint8_t>(inWord >> 8));
}

void NvFileWriter::Write(const void* inBytes, std::uint32_t inCount) {
    const auto* bytes = static_cast<const std::uint8_t*>(inBytes);
    while (inCount > 0) {
        if (mCount == mSize)
            MakeRoom();
        const std::uint32_t piece = std::min(inCount, km_BufferSize - mCount);
        std::memcpy(mBuffer.get() + mCount, bytes, piece);
        mCount += piece;
        bytes += piece;
        inCount -= piece;
    }
}

void NvFileWriter::Flush() {
    const std::uint32_t count = mCount;
    mCount = 0;
    if (count > 0)
        mFile.Write(mBuffer.get(), count);
}

// The first byte makes the buffer: most files are only read.
void NvFileWriter::MakeRoom() {
    Flush();
    if (mBuffer)
        return;
    mBuffer = NvMakeArray<std::uint8_t>(km_BufferSize);
    mSize = km_BufferSize;
}
