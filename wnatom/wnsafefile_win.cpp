#include "wnatom/wnsafefile.h"

#include <array>
#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"
#include "wnatom/wnfolders_win.h"

// The temporary file stays open while it is in use, so a living run holds it against any that opens it for
// itself alone: that distinguishes it from a leftover.

namespace {

constexpr std::wstring_view km_Prefix = L".parvigif-";
constexpr std::wstring_view km_Suffix = L".tmp";
constexpr DWORD km_ShareWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Scanners and indexers look at new and changed files for a moment.
constexpr int km_RenameTries = 12;
constexpr DWORD km_RenamePause = 50; // milliseconds

[[noreturn]] void ThrowLastError() {
    ThrowRuntimeError(NvLastErrno());
}

/** A link's path becomes that of the file it leads to; raises 10 when it leads to nothing. Links among the
 *  folders do no harm. */
std::string ResolveTarget(const char* inPath) {
    const std::wstring path = NvWidePath(inPath);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return inPath;
    const NvWindowsHandle file(
        CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, km_ShareWithAll, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file.IsValid())
        ThrowLastError();
    std::wstring resolved(GetFinalPathNameByHandleW(file.Get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    const DWORD size = GetFinalPathNameByHandleW(file.Get(), resolved.data(),
                                                 static_cast<DWORD>(resolved.size()), FILE_NAME_NORMALIZED);
    if (size == 0 || size > resolved.size())
        ThrowLastError();
    resolved.resize(size);
    return NvNarrow(resolved);
}

/** Creates a file of a name that was not there and returns its descriptor. */
int CreateTemporary(const std::wstring& inFolder, std::string& outPath) {
    for (;;) {
        const std::wstring path =
            inFolder + std::wstring(km_Prefix) + WnGetRandomName() + std::wstring(km_Suffix);
        outPath = NvNarrow(path);
        const HANDLE file = CreateFileW(NvWidePath(outPath).c_str(), GENERIC_READ | GENERIC_WRITE,
                                        km_ShareWithAll, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE)
            return _open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_BINARY | _O_NOINHERIT);
        if (GetLastError() != ERROR_FILE_EXISTS)
            ThrowLastError();
    }
}

HANDLE HandleOf(int inDescriptor) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(inDescriptor));
}

/** Copies the rights that a file does not inherit from its folder, as far as the file system has any. */
void CopyAccessList(std::wstring inFrom, std::wstring inTo) {
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetNamedSecurityInfoW(inFrom.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              &list, nullptr, &descriptor) != ERROR_SUCCESS)
        return;
    const std::unique_ptr<void, HLOCAL (*)(HLOCAL)> owned(descriptor, &LocalFree);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(descriptor, &control, &revision);
    const DWORD inheriting = (control & SE_DACL_PROTECTED) != 0 ? PROTECTED_DACL_SECURITY_INFORMATION
                                                                : UNPROTECTED_DACL_SECURITY_INFORMATION;
    SetNamedSecurityInfoW(inTo.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | inheriting, nullptr,
                          nullptr, list, nullptr);
}

/** Hidden stays hidden, and the picture is as old as it was. */
void CopyAttributes(const FILE_BASIC_INFO& inFrom, HANDLE inTo) {
    constexpr DWORD kept = FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN |
                           FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_READONLY |
                           FILE_ATTRIBUTE_SYSTEM;
    FILE_BASIC_INFO info{}; // what is 0 stays
    info.CreationTime = inFrom.CreationTime;
    info.FileAttributes =
        (inFrom.FileAttributes & kept) != 0 ? inFrom.FileAttributes & kept : FILE_ATTRIBUTE_NORMAL;
    SetFileInformationByHandle(inTo, FileBasicInfo, &info, sizeof(info));
}

void TakeAttributesOf(const std::string& inModelPath, const std::string& inPath, int inDescriptor) {
    const std::wstring model = NvWidePath(inModelPath);
    FILE_BASIC_INFO info{};
    {
        const NvWindowsHandle file(CreateFileW(model.c_str(), FILE_READ_ATTRIBUTES, km_ShareWithAll, nullptr,
                                               OPEN_EXISTING, 0, nullptr));
        if (!file.IsValid() || !GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &info, sizeof(info)))
            return;
    }
    CopyAccessList(model, NvWidePath(inPath));
    CopyAttributes(info, HandleOf(inDescriptor));
}

/** Whether trying again may help: another program had the file open, or was about to delete it. */
bool IsHeldByOthers(DWORD inError) {
    return inError == ERROR_SHARING_VIOLATION || inError == ERROR_ACCESS_DENIED ||
           inError == ERROR_LOCK_VIOLATION;
}

/** @return 0, or the error of Windows */
DWORD Rename(const std::string& inFrom, const std::string& inTo, DWORD inFlags) {
    const std::wstring from = NvWidePath(inFrom);
    const std::wstring to = NvWidePath(inTo);
    for (int tries = km_RenameTries;; --tries) {
        if (MoveFileExW(from.c_str(), to.c_str(), inFlags | MOVEFILE_WRITE_THROUGH))
            return ERROR_SUCCESS;
        const DWORD error = GetLastError();
        if (!IsHeldByOthers(error) || tries <= 1)
            return error;
        Sleep(km_RenamePause);
    }
}

/** Raises 5, or 1 with EBUSY, when Windows would not open it for inRights. */
void CheckRights(const std::wstring& inPath, DWORD inRights) {
    const NvWindowsHandle file(CreateFileW(inPath.c_str(), inRights, km_ShareWithAll, nullptr, OPEN_EXISTING,
                                           FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.IsValid())
        ThrowLastError();
}

bool IsTemporaryName(std::wstring_view inName) {
    return inName.size() == km_Prefix.size() + km_RandomNameSize + km_Suffix.size() &&
           inName.starts_with(km_Prefix) && inName.ends_with(km_Suffix);
}

/** Fails, as it should, while a living run has the file open. A link is removed, not what it leads to. */
void RemoveIfLeftOver(const std::string& inPath) {
    const NvWindowsHandle file(CreateFileW(NvWidePath(inPath).c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                           FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT,
                                           nullptr));
}

} // namespace

WnSafeFile::WnSafeFile(const char* inTargetPath, const char* inModelPath)
    : mGivenPath(inTargetPath),
      mTargetPath(ResolveTarget(inTargetPath)),
      mModelPath(inModelPath ? inModelPath : mTargetPath) {
    mDescriptor = CreateTemporary(WnGetFolderOf(NvWiden(mTargetPath)), mTemporaryPath);
}

WnSafeFile::~WnSafeFile() {
    if (mDescriptor >= 0)
        _close(mDescriptor);
    if (!mCommitted)
        DeleteFileW(NvWidePath(mTemporaryPath).c_str());
}

std::FILE* WnSafeFile::OpenStream() {
    const int descriptor = _dup(mDescriptor);
    std::FILE* const stream = descriptor < 0 ? nullptr : _fdopen(descriptor, "wb");
    if (!stream && descriptor >= 0)
        _close(descriptor);
    return stream;
}

void WnSafeFile::Finish() {
    if (mIsFinished)
        return;
    TakeAttributesOf(mModelPath, mTemporaryPath, mDescriptor);
    if (mModified) {
        FILE_BASIC_INFO info{}; // what is 0 stays
        info.LastWriteTime.QuadPart = *mModified;
        SetFileInformationByHandle(HandleOf(mDescriptor), FileBasicInfo, &info, sizeof(info));
    }
    if (!FlushFileBuffers(HandleOf(mDescriptor)))
        ThrowLastError();
    mIsFinished = true;
}

void WnSafeFile::Commit() {
    Finish();
    if (const DWORD error = Rename(mTemporaryPath, mTargetPath, MOVEFILE_REPLACE_EXISTING))
        ThrowRuntimeError(NvErrnoForWindows(error));
    mCommitted = true;
}

bool WnSafeFile::IsAsSeen(const WnFileState& inSeen) const {
    return WnGetFileState(mGivenPath.c_str()) == inSeen && WnGetFileState(mTargetPath.c_str()) == inSeen;
}

// Windows exchanges no names, so the moment between the last look and the rename is left.
std::optional<WnFileState> WnSafeFile::CommitOver(const WnFileState& inSeen) {
    Finish();
    if (!IsAsSeen(inSeen))
        return std::nullopt;
    const std::optional<WnFileState> written = WnGetOpenFileState(mDescriptor);
    if (const DWORD error = Rename(mTemporaryPath, mTargetPath, MOVEFILE_REPLACE_EXISTING))
        ThrowRuntimeError(NvErrnoForWindows(error));
    mCommitted = true;
    _close(std::exchange(mDescriptor, -1)); // which may set the times of what was written
    const std::optional<WnFileState> state = WnGetFileState(mTargetPath.c_str());
    const bool isOurs =
        written && state && state->mIdentity == written->mIdentity && state->mSize == written->mSize;
    return isOurs ? *state : WnFileState();
}

bool WnSafeFile::CommitUnlessPresent() {
    Finish();
    const DWORD error = Rename(mTemporaryPath, mTargetPath, 0);
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS)
        return false;
    if (error != ERROR_SUCCESS)
        ThrowRuntimeError(NvErrnoForWindows(error));
    mCommitted = true;
    return true;
}

void WnCheckReplaceable(const char* inPath) {
    const std::string target = ResolveTarget(inPath);
    const std::wstring path = NvWidePath(target);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        ThrowLastError();
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
        NvThrowWithSystemError(NvErrorCode::km_PermissionDenied, EACCES);
    CheckRights(path, GENERIC_WRITE | DELETE);
    const std::string folder = NvNarrow(WnGetFolderOf(NvWiden(target)));
    CheckRights(NvWidePath(folder.empty() ? "." : folder), FILE_ADD_FILE);
}

std::string WnGetTargetFolder(const char* inPath) {
    try {
        const std::string folder = NvNarrow(WnGetFolderOf(NvWiden(ResolveTarget(inPath))));
        return folder.empty() ? "." : folder;
    } catch (const NvErrorCode&) {
        return {};
    }
}

void WnRemoveLeftovers(const char* inFolder) {
    std::string folder = inFolder;
    if (!folder.ends_with('\\') && !folder.ends_with('/') && !folder.ends_with(':'))
        folder += '\\';
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(NvWidePath(folder + NvNarrow(km_Prefix) + "*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const bool isFile = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
        if (isFile && IsTemporaryName(entry.cFileName))
            RemoveIfLeftOver(folder + NvNarrow(entry.cFileName));
    } while (FindNextFileW(search, &entry));
    FindClose(search);
}
