#include "wnatom/wnscratch.h"

#include <string_view>
#include <vector>

#include <windows.h>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"
#include "wnatom/wnfolders_win.h"
#include "wnatom/wnsystem.h"

// A folder stays open for as long as it is in use, so a living process holds it against any that opens it to
// remove it: that distinguishes it from a leftover.

namespace {

constexpr const char* km_FixedPath = "C:\\TEMP.GIF";
constexpr std::wstring_view km_FolderPrefix = L"parvigif-scratch-";
constexpr int km_Tries = 5; // the name was there, or another process took the folder for left over too soon

/** Whole paths; none when the folder is gone. */
std::vector<std::wstring> ListFiles(const std::string& inFolder) {
    std::vector<std::wstring> paths;
    try {
        for (const std::string& name : WnListFiles(inFolder.c_str()))
            paths.push_back(NvWidePath(inFolder + "\\" + name));
    } catch (const NvErrorCode&) {
        return {};
    }
    return paths;
}

/** Listed first: Windows need not list what is about to be removed. */
void RemoveFolderIfLeftOver(const std::wstring& inFolder) {
    const std::vector<std::wstring> files = ListFiles(NvNarrow(inFolder));
    const NvWindowsHandle mine(CreateFileW(
        inFolder.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!mine.IsValid())
        return;
    for (const std::wstring& file : files)
        DeleteFileW(file.c_str());
}

void RemoveLeftovers(const std::wstring& inParent) {
    WIN32_FIND_DATAW entry;
    const std::wstring start = inParent + L"\\" + std::wstring(km_FolderPrefix);
    const HANDLE search = FindFirstFileW((start + L"*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const DWORD kind = entry.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
        const std::wstring_view name = entry.cFileName;
        if (kind == FILE_ATTRIBUTE_DIRECTORY && name.size() == km_FolderPrefix.size() + km_RandomNameSize)
            RemoveFolderIfLeftOver(inParent + L"\\" + entry.cFileName);
    } while (FindNextFileW(search, &entry));
    FindClose(search);
}

} // namespace

struct WnPrivateFolder::Hold {
    explicit Hold(const std::wstring& inPath)
        : mFolder(CreateFileW(inPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {}

    NvWindowsHandle mFolder;
};

WnPrivateFolder::WnPrivateFolder() {
    const std::wstring parent = WnGetTemporaryFolder();
    static const bool isClean = (RemoveLeftovers(parent), true);
    static_cast<void>(isClean);
    for (int tries = km_Tries;; --tries) {
        const std::wstring path = parent + L"\\" + std::wstring(km_FolderPrefix) + WnGetRandomName();
        if (CreateDirectoryW(path.c_str(), nullptr)) {
            mPath = NvNarrow(path);
            mHold = std::make_unique<Hold>(path);
            if (mHold->mFolder.IsValid())
                return;
        }
        if (tries <= 1)
            ThrowRuntimeError(NvLastErrno());
    }
}

WnPrivateFolder::~WnPrivateFolder() {
    for (const std::wstring& file : ListFiles(mPath))
        DeleteFileW(file.c_str());
    mHold.reset();
    RemoveDirectoryW(NvWidePath(mPath).c_str());
}

std::string WnPrivateFolder::MakePath(const std::string& inName) const {
    return mPath + "\\" + inName;
}

/** Made for the moment, unless something of that name is there already; gone when it is closed. */
struct WnScratchFile::Fixed {
    NvWindowsHandle mFile{CreateFileW(NvWiden(km_FixedPath).c_str(), GENERIC_WRITE | DELETE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE,
                                      nullptr)};
};

WnScratchFile::WnScratchFile() : mFixed(std::make_unique<Fixed>()), mPath(km_FixedPath) {
    if (mFixed->mFile.IsValid())
        return;
    mFixed.reset();
    mFolder = std::make_unique<WnPrivateFolder>();
    mPath = mFolder->MakePath("TEMP.GIF");
}

WnScratchFile::~WnScratchFile() = default;
