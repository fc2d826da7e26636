#pragma once

#include <array>
#include <cstdint>

/** The one exception type: what went wrong, the operating system's error number, and who raised it.
 *
 *  Thrown and caught by value. It holds numbers only; the words for them belong to the front ends.
 *  Contract violations are never reported this way (see nvassert.h). */
class NvErrorCode {
public:
    /** The library's error numbers. Other programs' logs quote them, so they never change. */
    enum Code : std::uint32_t {
        km_NoError = 0,
        km_Failure = 1,          ///< a runtime failure without a number of its own
        km_OutOfMemory = 2,      ///< an allocation failed, or would pass the memory limit
        km_Cancelled = 3,        ///< the user asked to stop; means nothing else
        km_NoFileSpecified = 4,  ///< a file operation without a path
        km_PermissionDenied = 5, ///< EACCES after a call other than open; unknown open permission
        km_TooManyFiles = 9,     ///< EAGAIN, EMFILE
        km_FileNotFound = 10,    ///< ENOENT
        km_FileAlreadyOpen = 11, ///< open, create or delete of an open file
        km_WrongPermission = 12, ///< read of a write-only file or the reverse; EEXIST, EINVAL while opening
        km_OpenDenied = 14,      ///< EACCES while opening
        km_FileNotOpen = 15,     ///< an operation that needs an open file
        km_CrossDevice = 17,     ///< EXDEV
        km_EndOfFile = 18,       ///< a read found no byte at all
        km_BadDescriptor = 20,   ///< EBADF; a failed close
        km_BadParameter = 21,    ///< E2BIG, EINVAL; a bad seek origin, colour count or polarity
        km_DiskFull = 22,        ///< ENOSPC; a short write
        km_MissingData = 27,     ///< an operation on a table, mask or buffer that holds nothing
        km_MalformedGIF = 28,    ///< the bytes are not a well-formed GIF
        km_OutOfRange = 29,      ///< ERANGE
        km_FileExists = 31,      ///< EEXIST after a call other than open
        km_NotGIF = 32,          ///< the signature is not "GIF"; a file that could not be opened for loading
        km_UnknownGIFVersion = 33, ///< neither "87a" nor "89a"
        km_StringResource = 35,    ///< a string resource is missing
        km_NotSupported = 37,      ///< the class does not support the operation
        km_WrongFormatInfo = 38,   ///< a frame was given no record, or one of another file format
    };

    /** @param inFileName  the source file that raises the error, kept up to 255 characters
     *  @param inLine      the line in it */
    NvErrorCode(std::uint32_t inCode, const char* inFileName, std::uint32_t inLine);
    NvErrorCode(std::uint32_t inCode, std::int32_t inSystemError, const char* inFileName,
                std::uint32_t inLine);

    /** Copies are the same error: the report hook is not called again. */
    NvErrorCode(const NvErrorCode&) = default;
    NvErrorCode& operator=(const NvErrorCode&) = default;

    /** A copy for rethrowing: the given place is ignored, so the first raiser stays named. */
    NvErrorCode(const NvErrorCode& inError, const char* inFileName, std::uint32_t inLine);

    std::uint32_t GetCode() const { return mCode; }
    /** errno of the runtime call behind the error, or 0. */
    std::int32_t GetSystemError() const { return mSystemError; }
    /** Who raised it, for report hooks and debuggers; people see the code's words. Length-prefixed and
     *  NUL-terminated: one length byte, then at most 255 characters. */
    const unsigned char* GetFileName() const { return mFileName.data(); }
    std::uint32_t GetLine() const { return mLine; }

private:
    std::uint32_t mCode;
    std::int32_t mSystemError;
    std::array<unsigned char, 257> mFileName; // length byte, up to 255 characters, NUL
    std::uint32_t mLine;
};

/** Called once with each newly raised error, before it is thrown. */
using NvErrorReportHook = void (*)(const NvErrorCode& inError);

/** Installs the process-wide report hook, for debugging and tools; nullptr (the default) removes it. */
void NvSetErrorReportHook(NvErrorReportHook inHook);

/** Throws an NvErrorCode that names the caller's place: the defaults are evaluated there. (clang has
 *  std::source_location only from version 16 on.) */
[[noreturn]] void NvThrow(std::uint32_t inCode, const char* inFileName = __builtin_FILE(),
                          std::uint32_t inLine = __builtin_LINE());

/** Throws an NvErrorCode with a code of the caller's choice and the runtime error number behind it. */
[[noreturn]] void NvThrowWithSystemError(std::uint32_t inCode, std::int32_t inSystemError,
                                         const char* inFileName = __builtin_FILE(),
                                         std::uint32_t inLine = __builtin_LINE());

/** Maps errno of a failed runtime call to a code and throws it; an unknown number gives code 1.
 *  Opening a file has a mapping of its own, see NvFile::Open. */
[[noreturn]] void ThrowRuntimeError(std::int32_t inSystemError);
