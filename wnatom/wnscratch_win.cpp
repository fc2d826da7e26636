#include "wnatom/wnscratch.h"

#include <windows.h>

#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvwindows_win.h"
#include "wnatom/wnfolders_win.h"

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

WnScratchFile::WnScratchFile() {
    if (CreateExclusively(kFixedPath)) {
        mPath = kFixedPath;
        return;
    }
    mFolder = MakeFreshFolder();
    mPath = mFolder + "\\TEMP.GIF";
}

WnScratchFile::~WnScratchFile() {
    DeleteFileW(NvWidePath(mPath).c_str());
    if (!mFolder.empty())
        RemoveDirectoryW(NvWidePath(mFolder).c_str());
}
