#include "wnatom/wnsystem.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include <io.h>
#include <shlobj.h>
#include <windows.h>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"

namespace {

/** A handle that looks at what stands at a path, links followed, with no right to read or write it. */
NvWindowsHandle OpenToLook(const char* inPath) {
    return NvWindowsHandle(CreateFileW(NvWidePath(inPath).c_str(), FILE_READ_ATTRIBUTES,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

std::uint64_t Join(DWORD inHigh, DWORD inLow) {
    return (static_cast<std::uint64_t>(inHigh) << 32) | inLow;
}

[[noreturn]] void ThrowOpenError(int inSystemError) {
    if (inSystemError == EACCES)
        NvThrowWithSystemError(NvErrorCode::km_OpenDenied, inSystemError);
    ThrowRuntimeError(inSystemError);
}

std::wstring GetEnvironmentText(const wchar_t* inName) {
    std::wstring value(MAX_PATH, L'\0');
    const DWORD size = GetEnvironmentVariableW(inName, value.data(), MAX_PATH);
    value.resize(size < MAX_PATH ? size : 0);
    return value;
}

/** The user's folder for application data, as this Windows or the oldest ones have it. */
std::wstring GetApplicationDataFolder() {
    std::wstring folder(MAX_PATH, L'\0');
    if (SHGetSpecialFolderPathW(nullptr, folder.data(), CSIDL_APPDATA, TRUE))
        return folder.c_str();
    const std::wstring user = GetEnvironmentText(L"UserName");
    return L"C:\\Documents and Settings\\" + (user.empty() ? L"All Users" : user) + L"\\Application Data";
}

/** The entries of a folder that inIsWanted accepts, by their names. */
template <typename Predicate>
std::vector<std::string> ListEntries(const std::string& inFolder, Predicate inIsWanted) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(NvWidePath(inFolder + "*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        if (GetLastError() == ERROR_FILE_NOT_FOUND) // the root of an empty disk
            return {};
        ThrowOpenError(NvLastErrno());
    }
    const std::unique_ptr<void, BOOL (*)(HANDLE)> owned(search, &FindClose);
    std::vector<std::string> names;
    do {
        if (inIsWanted(entry))
            names.push_back(NvNarrow(entry.cFileName));
    } while (FindNextFileW(search, &entry));
    std::sort(names.begin(), names.end()); // std::string compares its characters as unsigned bytes
    return names;
}

std::string WithSeparator(std::string inFolder) {
    if (inFolder.empty() || !WnIsSeparator(inFolder.back()))
        inFolder += WnGetSeparator();
    return inFolder;
}

/** The name in a folder listing leads to a file, not to a folder, a device or nowhere. */
bool IsFile(const std::string& inFolder, const WIN32_FIND_DATAW& inEntry) {
    constexpr DWORD doubtful = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
    if ((inEntry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return false;
    if ((inEntry.dwFileAttributes & doubtful) == 0)
        return true;
    try {
        return WnGetFileKind((inFolder + NvNarrow(inEntry.cFileName)).c_str()) == WnFileKind::km_RegularFile;
    } catch (const NvErrorCode&) {
        return true; // it exists; working on it will show what is wrong with it
    }
}

std::optional<WnFileState> GetState(HANDLE inFile) {
    BY_HANDLE_FILE_INFORMATION info{};
    FILE_BASIC_INFO times{};
    if (!GetFileInformationByHandle(inFile, &info) ||
        !GetFileInformationByHandleEx(inFile, FileBasicInfo, &times, sizeof(times)))
        return std::nullopt;
    WnFileState state;
    state.mIdentity = {info.dwVolumeSerialNumber, Join(info.nFileIndexHigh, info.nFileIndexLow)};
    state.mSize = Join(info.nFileSizeHigh, info.nFileSizeLow);
    state.mModified = times.LastWriteTime.QuadPart;
    state.mChanged = times.ChangeTime.QuadPart;
    return state;
}

} // namespace

std::uint64_t WnGetPhysicalMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    return GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
}

std::string WnGetDataFolder() {
    const std::wstring folder = GetApplicationDataFolder() + L"\\Norvek";
    if (CreateDirectoryW(folder.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS)
        return NvNarrow(folder);
    return "C:\\Windows";
}

WnFileKind WnGetFileKind(const char* inPath) {
    const NvWindowsHandle file = OpenToLook(inPath);
    if (file.IsValid()) {
        FILE_BASIC_INFO info{};
        if (GetFileType(file.Get()) != FILE_TYPE_DISK ||
            !GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &info, sizeof(info)))
            return WnFileKind::km_Other;
        const bool isFolder = (info.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        return isFolder ? WnFileKind::km_Folder : WnFileKind::km_RegularFile;
    }
    const int error = NvLastErrno();
    if (error != ENOENT && error != ENOTDIR)
        ThrowOpenError(error);
    const bool isLinkToNothing = GetFileAttributesW(NvWidePath(inPath).c_str()) != INVALID_FILE_ATTRIBUTES;
    return isLinkToNothing ? WnFileKind::km_Other : WnFileKind::km_Missing;
}

std::optional<WnFileIdentity> WnGetFileIdentity(const char* inPath) {
    const std::optional<WnFileState> state = WnGetFileState(inPath);
    return state ? std::optional(state->mIdentity) : std::nullopt;
}

std::optional<WnFileState> WnGetFileState(const char* inPath) {
    const NvWindowsHandle file = OpenToLook(inPath);
    return file.IsValid() ? GetState(file.Get()) : std::nullopt;
}

std::optional<WnFileState> WnGetOpenFileState(int inDescriptor) {
    return GetState(reinterpret_cast<HANDLE>(_get_osfhandle(inDescriptor)));
}

std::vector<std::string> WnListFiles(const char* inFolder) {
    const std::string folder = WithSeparator(inFolder);
    return ListEntries(folder, [&](const WIN32_FIND_DATAW& entry) { return IsFile(folder, entry); });
}

std::vector<std::string> WnListFolders(const char* inFolder) {
    std::vector<std::string> names = ListEntries(WithSeparator(inFolder), [](const WIN32_FIND_DATAW& entry) {
        constexpr DWORD kind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
        return (entry.dwFileAttributes & kind) == FILE_ATTRIBUTE_DIRECTORY;
    });
    std::erase_if(names, [](const std::string& name) { return name == "." || name == ".."; });
    return names;
}

std::filesystem::path WnMakePath(const std::string& inPath) {
    return NvWidePath(inPath);
}

bool WnIsSeparator(char inCharacter) {
    return inCharacter == '\\' || inCharacter == '/' || inCharacter == ':'; // C:x.gif lies in C:'s own folder
}

char WnGetSeparator() {
    return '\\';
}
