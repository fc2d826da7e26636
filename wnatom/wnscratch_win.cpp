#include "wnatom/wnscratch.h"

#include <windows.h>

#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvwindows_win.h"
#include "wnatom/wnfolders_win.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr const char* kFixedPath = "C:\\TEMP.GIF";

/** Makes the file, unless something of that name is there already. */
bool CreateExclusively(const char* inPath) {
    const NvWindowsHandle file(CreateFileW(NvWiden(inPath).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                           FILE_ATTRIBUTE_TEMPORARY, nullptr));
    return file.IsValid();
}

std::string MakeFreshFolder() {
    for (;;) {
        const std::wstring folder = WnGetTemporaryFolder() + L"\\parvigif-" + WnGetRandomName();
        if (CreateDirectoryW(folder.c_str(), nullptr))
            return NvNarrow(folder);
        if (GetLastError() != ERROR_ALREADY_EXISTS)
            ThrowRuntimeError(NvLastErrno());
    }
}

} // namespace

WnPrivateFolder::WnPrivateFolder() : mPath(MakeFreshFolder()) {}

WnPrivateFolder::~WnPrivateFolder() {
    try {
        for (const std::string& name : WnListFiles(mPath.c_str()))
            DeleteFileW(NvWidePath(mPath + "\\" + name).c_str());
    } catch (const NvErrorCode&) {
        return; // somebody else removed it
    }
    RemoveDirectoryW(NvWidePath(mPath).c_str());
}

WnScratchFile::WnScratchFile() : mPath(kFixedPath) {
    if (CreateExclusively(kFixedPath))
        return;
    mFolder = std::make_unique<WnPrivateFolder>();
    mPath = mFolder->GetPath() + "\\TEMP.GIF";
}

WnScratchFile::~WnScratchFile() {
    if (!mFolder)
        DeleteFileW(NvWiden(mPath).c_str());
}
