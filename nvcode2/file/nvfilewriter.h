#pragma once

#include <cstdint>
#include <memory>

class NvFile;

/** Gathers small writes to an open NvFile into large ones.
 *
 *  Only Flush makes sure that everything reaches the file; destruction drops what is still held, so that a
 *  writer can be abandoned after an error. */
class NvFileWriter {
public:
    /** @param inFile  borrowed; open for writing while Write functions are called */
    explicit NvFileWriter(NvFile& inFile);

    /** @throws NvErrorCode of NvFile::Write, 2; so do the others */
    void WriteByte(std::uint8_t inByte) {
        if (mCount == mSize)
            MakeRoom();
        mBuffer[mCount++] = inByte;
    }

    /** A 16-bit number, little-endian. */
    void WriteWord(std::uint16_t inWord);

    void Write(const void* inBytes, std::uint32_t inCount);

    /** Hands everything held to the file. */
    void Flush();

    /** Drops everything held. */
    void Discard() { mCount = 0; }

private:
    void MakeRoom();

    static constexpr std::uint32_t km_BufferSize = 65536;

    NvFile& mFile;
    std::unique_ptr<std::uint8_t[]> mBuffer;
    std::uint32_t mSize = 0; // of mBuffer: none, or the size above
    std::uint32_t mCount = 0;
};
