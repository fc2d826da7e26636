#pragma once

#include <cstdint>

#include "nvcode2/file/nvfilelocator.h"

/** A binary file with a path: unbuffered reading and writing, and a counting mode that only measures.
 *
 *  In counting mode (km_WritePerm and km_CountPerm) there is no descriptor, and no path is needed: writes
 *  advance a counter that stands for the file's length and position, so that a writer learns how long its
 *  output would be without touching the disk. Reading raises 12 there, seeking 20.
 *
 *  Positions and lengths are bytes. A file of 2 GiB or more is too large: what does not fit raises 29.
 *  "By errno" below is the mapping of ThrowRuntimeError. */
class NvFile : public NvFileLocator {
public:
    static constexpr std::uint16_t km_ReadPerm = 1;
    static constexpr std::uint16_t km_WritePerm = 2;
    static constexpr std::uint16_t km_CountPerm = 4;

    static constexpr std::uint16_t km_FromStart = 0;
    static constexpr std::uint16_t km_FromCurrent = 1;
    static constexpr std::uint16_t km_FromEnd = 2;

    /** A closed file without a path. */
    NvFile() = default;

    /** A closed file with a copy of the path.
     *  @throws NvErrorCode  2 */
    explicit NvFile(const char* inPath) : NvFileLocator(inPath) {}
    explicit NvFile(const NvFileLocator& inLocator) : NvFileLocator(inLocator) {}

    NvFile(const NvFile&) = delete;
    NvFile& operator=(const NvFile&) = delete;

    /** Closes a descriptor that Close would close, without reporting failures: a file whose content matters
     * is closed by Close. */
    ~NvFile();

    /** Opens the file at the path, adopts an open descriptor, or starts to count.
     *
     *  @param inPerm          km_ReadPerm: an existing regular file. km_WritePerm: emptied, or created for
     *  its owner alone. Both: an existing regular file, not emptied. km_WritePerm and km_CountPerm: counting
     *  mode; a file that already counts starts again at 0
     *  @param inCloseOnClose  whether Close, and the destructor, close the descriptor
     *  @param inDescriptor    an open descriptor to use instead of the path, or -1
     *  @throws NvErrorCode    4 without path and descriptor; 11 when already open; 5 for another inPerm with
     *  a path; from opening: 14 (EACCES), 12 (EEXIST, EINVAL), 9 (EMFILE), 10 (ENOENT), 1. The file then
     *  stays open or closed as it was, and keeps what it has counted */
    void Open(std::uint16_t inPerm, bool inCloseOnClose = true, std::int32_t inDescriptor = -1);

    /** @throws NvErrorCode  15 when not open; 20 when closing fails, with the file closed all the same */
    void Close();

    bool IsOpen() const { return mIsOpen; }

    /** Reads up to inCount bytes from the position on. Reading 0 bytes does nothing.
     *
     *  @return              bytes read, from 1 to inCount; the caller checks for fewer than it needs
     *  @throws NvErrorCode  15 when not open, 12 when not opened for reading, 18 at the end of the file, or
     *                       by errno */
    std::uint32_t Read(void* outBuffer, std::uint32_t inCount);

    /** Writes all inCount bytes at the position.
     *
     *  @throws NvErrorCode  15 when not open, 12 when not opened for writing, 22 when there is no room for
     *  all of them, or by errno */
    void Write(const void* inBuffer, std::uint32_t inCount);

    /** Moves the position by inOffset bytes from km_FromStart, km_FromCurrent or km_FromEnd. It may move past
     *  the end.
     *  @throws NvErrorCode  15 when not open, 21 for another origin or a position before the start, or by
     *                       errno */
    void Seek(std::uint16_t inOrigin, std::int32_t inOffset);

    /** @throws NvErrorCode  15 when not open, 29, or by errno */
    std::uint32_t GetPosition() const;

    /** What a file has counted remains known after Close.
     *  @throws NvErrorCode  15 when not open, 29, or by errno */
    std::uint32_t GetLength() const;

    /** Cuts the file or fills it up with zeros; the position stays. In counting mode, sets the counter.
     *  @throws NvErrorCode  15 when not open, or by errno */
    void SetLength(std::uint32_t inLength);

    /** Waits until everything written has reached the disk; nothing in counting mode.
     *  @throws NvErrorCode  15 when not open, or by errno */
    void Flush();

    /** Creates the file at the path, readable and writable for its owner, or empties it; it stays closed.
     *  @throws NvErrorCode  4 without a path, 11 when open, or by errno */
    void Create();

    /** Removes the file at the path.
     *  @return              0, or -1 with errno set when it could not be removed
     *  @throws NvErrorCode  4 without a path, 11 when open */
    int Delete();

    /** The runtime's number (SEEK_SET, SEEK_CUR, SEEK_END) for one of the three origins.
     *  @throws NvErrorCode  21 for anything else */
    static int MapOrigin(std::uint16_t inOrigin);

private:
    bool IsCounting() const;
    void RequireOpen() const;
    void RequireClosedWithPath() const;

    bool mIsOpen = false;
    std::uint16_t mFilePerm = 0;
    std::uint64_t mByteCounter = 0;
    std::int32_t mDescriptor = -1;
    bool mCloseOnClose = true;
};
