#include "nvcode2/base/nvwindows_win.h"

#include <cerrno>

#include <windows.h>

namespace {

// New folders must leave room for a short file name, which makes theirs the tightest limit: 248 characters.
constexpr std::size_t km_LongPath = 240;

constexpr DWORD km_DiskQuotaExceeded = 1295; // mingw's headers lack its name

std::wstring GetFullPath(const std::wstring& inPath) {
    std::wstring full(GetFullPathNameW(inPath.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(inPath.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

} // namespace

std::wstring NvWiden(std::string_view inText) {
    const int size = static_cast<int>(inText.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, inText.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, inText.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string NvNarrow(std::wstring_view inText) {
    const int size = static_cast<int>(inText.size());
    std::string narrow(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, inText.data(), size, nullptr,
                                                                    0, nullptr, nullptr)),
                       '\0');
    WideCharToMultiByte(CP_UTF8, 0, inText.data(), size, narrow.data(), static_cast<int>(narrow.size()),
                        nullptr, nullptr);
    return narrow;
}

std::wstring NvWidePath(std::string_view inPath) {
    const std::wstring path = NvWiden(inPath);
    const std::wstring full = GetFullPath(path);
    const bool isPlain = !full.starts_with(L"\\\\?\\") && !full.starts_with(L"\\\\.\\");
    if (!isPlain || full.size() < km_LongPath)
        return path;
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

int NvErrnoForWindows(std::uint32_t inWindowsError) {
    switch (inWindowsError) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_CANT_RESOLVE_FILENAME:
        return ENOENT;
    case ERROR_TOO_MANY_OPEN_FILES:
        return EMFILE;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_CANNOT_MAKE:
        return EACCES;
    case ERROR_INVALID_HANDLE:
        return EBADF;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return ENOMEM;
    case ERROR_NOT_SAME_DEVICE:
        return EXDEV;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_BUSY:
        return EBUSY;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case km_DiskQuotaExceeded:
    case ERROR_FILE_TOO_LARGE:
        return ENOSPC;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return EEXIST;
    case ERROR_INVALID_PARAMETER:
    case ERROR_NEGATIVE_SEEK:
        return EINVAL;
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
        return EPIPE;
    case ERROR_FILENAME_EXCED_RANGE:
        return ENAMETOOLONG;
    case ERROR_DIRECTORY:
        return ENOTDIR;
    default:
        return EIO;
    }
}

int NvLastErrno() {
    return NvErrnoForWindows(GetLastError());
}

NvWindowsHandle::~NvWindowsHandle() {
    if (IsValid())
        CloseHandle(mHandle);
}

bool NvWindowsHandle::IsValid() const {
    return mHandle != nullptr && mHandle != INVALID_HANDLE_VALUE;
}
