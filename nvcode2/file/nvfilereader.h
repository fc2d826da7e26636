#pragma once

#include <cstdint>
#include <memory>

class NvFile;

/** Reads an open NvFile ahead in large pieces, since a GIF is parsed a few bytes at a time.
 *
 *  The position is a 32-bit byte offset from the start of the file; the file itself is limited to below 2 GiB
 *  by NvFile. While a reader is in use nothing else may move the file's position. */
class NvFileReader {
public:
    /** @param inFile  borrowed; open for reading while Read functions are called
     *  @throws NvErrorCode 2 */
    explicit NvFileReader(NvFile& inFile);

    /** Moves to a position. What was read ahead is kept when the position lies in it. */
    void Seek(std::uint32_t inPosition);

    /** Forgets what was read ahead, before another file is read. Seek comes next. */
    void Reset();

    /** Whether the last byte has been read. @throws NvErrorCode of NvFile::GetLength */
    bool IsAtEnd() const;

    /** Offset of the next byte to be read. */
    std::uint32_t GetPosition() const;

    /** @throws NvErrorCode 18 at the end of the file, and the errors of NvFile::Read */
    std::uint8_t ReadByte() {
        if (mNext == mEnd)
            Refill();
        return mBuffer[mNext++];
    }

    /** A little-endian 16-bit number. @throws NvErrorCode as ReadByte */
    std::uint16_t ReadWord();

    /** Reads exactly inCount bytes. @throws NvErrorCode as ReadByte */
    void Read(void* outBytes, std::uint32_t inCount);

    /** Passes over inCount bytes, all of which must exist. @throws NvErrorCode as ReadByte */
    void Skip(std::uint32_t inCount);

    /** Passes over data sub-blocks up to and including their zero terminator. */
    void SkipSubBlocks();

private:
    void Refill();

    NvFile& mFile;
    std::unique_ptr<std::uint8_t[]> mBuffer;
    std::uint32_t mBufferStart = 0; // file offset of mBuffer[0]
    bool mIsPlaced = false;         // the file's own position is where mBuffer ends
    std::uint32_t mNext = 0;        // index in mBuffer of the next byte
    std::uint32_t mEnd = 0;         // number of valid bytes in mBuffer
};
