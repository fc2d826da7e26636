#pragma once

#include <cstdint>

/** The operating system's file calls, one body per platform; only NvFile uses it.
 *
 *  Files are binary, and other programs may open them meanwhile. Offsets and lengths are 64 bits, in bytes.
 *  Every function returns -1 with errno set when it fails, and repeats a call that a signal interrupted. */
class NvFilePlatform {
public:
    enum class Access {
        km_Read,   ///< an existing file, for reading
        km_Write,  ///< for writing; created when missing, emptied when not
        km_Update, ///< an existing file, for reading and writing; not emptied
    };

    /** Opens without ever waiting for the other end of a pipe. What is to be read must be a regular file.
     *  @return the descriptor */
    static std::int32_t Open(const char* inPath, Access inAccess);

    /** The descriptor is gone afterwards, also when closing failed. */
    static std::int32_t Close(std::int32_t inDescriptor);

    /** @return bytes read, possibly fewer than asked for; 0 at the end of the file */
    static std::int64_t Read(std::int32_t inDescriptor, void* outBuffer, std::uint32_t inCount);

    /** Writes all of inCount bytes or fails; no room left, for whatever reason, is ENOSPC. */
    static std::int32_t Write(std::int32_t inDescriptor, const void* inBuffer, std::uint32_t inCount);

    /** @param inOrigin  SEEK_SET, SEEK_CUR or SEEK_END
     *  @return          the new position */
    static std::int64_t Seek(std::int32_t inDescriptor, std::int64_t inOffset, int inOrigin);

    static std::int64_t GetLength(std::int32_t inDescriptor);
    static std::int32_t SetLength(std::int32_t inDescriptor, std::int64_t inLength);

    /** Waits until what was written has reached the disk. */
    static std::int32_t Flush(std::int32_t inDescriptor);

    /** Creates or empties the file. */
    static std::int32_t Create(const char* inPath);

    static std::int32_t Remove(const char* inPath);
};
