#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"
#include "nvcode2/file/nvfileplatform.h"

// A descriptor of the runtime library stands for a handle of Windows, which does the work: its functions take
// longer paths, share more and report errors more precisely.

namespace {

constexpr DWORD km_ShareWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

int Fail() {
    errno = NvLastErrno();
    return -1;
}

int Fail(int inError) {
    errno = inError;
    return -1;
}

HANDLE HandleOf(std::int32_t inDescriptor) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(inDescriptor)); // errno is set when there is none
}

/** 0 for a regular file, otherwise an errno that says why it cannot be read like one. CON.GIF is the console,
 *  in whatever folder it is looked for. */
int CheckRegular(HANDLE inFile) {
    return GetFileType(inFile) == FILE_TYPE_DISK ? 0 : ESPIPE;
}

/** Windows refuses a folder as it refuses a file without permission; errno has a number for each. */
int CheckNoFolder(const std::wstring& inPath) {
    const DWORD attributes = GetFileAttributesW(inPath.c_str());
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return isFolder ? EISDIR : 0;
}

std::int32_t OpenHandle(const char* inPath, DWORD inRights, DWORD inDisposition) {
    const std::wstring path = NvWidePath(inPath);
    const HANDLE file = CreateFileW(path.c_str(), inRights, km_ShareWithAll, nullptr, inDisposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const int error = NvLastErrno();
        const int folder = CheckNoFolder(path);
        return Fail(folder != 0 ? folder : error);
    }
    if (const int error = CheckRegular(file)) {
        CloseHandle(file);
        return Fail(error);
    }
    const std::int32_t descriptor =
        _open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_BINARY | _O_NOINHERIT);
    if (descriptor == -1) // errno is EMFILE
        CloseHandle(file);
    return descriptor;
}

/** Opens and empties rather than creates, which would fail for a hidden file. */
std::int32_t OpenEmptied(const char* inPath, DWORD inRights) {
    const std::int32_t descriptor = OpenHandle(inPath, inRights, OPEN_ALWAYS);
    if (descriptor != -1 && NvFilePlatform::SetLength(descriptor, 0) == -1) {
        const int error = errno;
        NvFilePlatform::Close(descriptor);
        return Fail(error);
    }
    return descriptor;
}

} // namespace

std::int32_t NvFilePlatform::Open(const char* inPath, Access inAccess) {
    switch (inAccess) {
    case Access::km_Read:
        return OpenHandle(inPath, GENERIC_READ, OPEN_EXISTING);
    case Access::km_Update:
        return OpenHandle(inPath, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    case Access::km_Write:
        break;
    }
    return OpenEmptied(inPath, GENERIC_WRITE);
}

std::int32_t NvFilePlatform::Close(std::int32_t inDescriptor) {
    return _close(inDescriptor);
}

std::int64_t NvFilePlatform::Read(std::int32_t inDescriptor, void* outBuffer, std::uint32_t inCount) {
    const HANDLE file = HandleOf(inDescriptor);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    DWORD count = 0;
    return ReadFile(file, outBuffer, inCount, &count, nullptr) ? static_cast<std::int64_t>(count) : Fail();
}

std::int32_t NvFilePlatform::Write(std::int32_t inDescriptor, const void* inBuffer, std::uint32_t inCount) {
    const HANDLE file = HandleOf(inDescriptor);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    DWORD count = 0;
    if (!WriteFile(file, inBuffer, inCount, &count, nullptr))
        return Fail();
    return count == inCount ? 0 : Fail(ENOSPC);
}

std::int64_t NvFilePlatform::Seek(std::int32_t inDescriptor, std::int64_t inOffset, int inOrigin) {
    static_assert(SEEK_SET == FILE_BEGIN && SEEK_CUR == FILE_CURRENT && SEEK_END == FILE_END);
    const HANDLE file = HandleOf(inDescriptor);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    LARGE_INTEGER offset;
    LARGE_INTEGER position;
    offset.QuadPart = inOffset;
    return SetFilePointerEx(file, offset, &position, static_cast<DWORD>(inOrigin)) ? position.QuadPart
                                                                                   : Fail();
}

std::int64_t NvFilePlatform::GetLength(std::int32_t inDescriptor) {
    const HANDLE file = HandleOf(inDescriptor);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    LARGE_INTEGER length;
    return GetFileSizeEx(file, &length) ? length.QuadPart : Fail();
}

std::int32_t NvFilePlatform::SetLength(std::int32_t inDescriptor, std::int64_t inLength) {
    const HANDLE file = HandleOf(inDescriptor);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    FILE_END_OF_FILE_INFO end; // unlike SetEndOfFile, this leaves the position alone
    end.EndOfFile.QuadPart = inLength;
    return SetFileInformationByHandle(file, FileEndOfFileInfo, &end, sizeof(end)) ? 0 : Fail();
}

std::int32_t NvFilePlatform::Flush(std::int32_t inDescriptor) {
    const HANDLE file = HandleOf(inDescriptor);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    return FlushFileBuffers(file) ? 0 : Fail();
}

std::int32_t NvFilePlatform::Create(const char* inPath) {
    const std::int32_t descriptor = OpenEmptied(inPath, GENERIC_READ | GENERIC_WRITE);
    return descriptor == -1 ? -1 : Close(descriptor);
}

std::int32_t NvFilePlatform::Remove(const char* inPath) {
    return DeleteFileW(NvWidePath(inPath).c_str()) ? 0 : Fail();
}
