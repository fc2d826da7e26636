#include "wnatom/wnscratch.h"

#include <cerrno>
#include <cstdlib>

#include <unistd.h>

#include "nvcode2/nverrorcode.h"
#include "wnatom/wnfolders_posix.h"
#include "wnatom/wnsystem.h"

WnPrivateFolder::WnPrivateFolder() : mPath(WnGetTemporaryFolder() + "/parvigif-XXXXXX") {
    if (!mkdtemp(mPath.data()))
        ThrowRuntimeError(errno);
}

WnPrivateFolder::~WnPrivateFolder() {
    try {
        for (const std::string& name : WnListFiles(mPath.c_str()))
            unlink((mPath + "/" + name).c_str());
    } catch (const NvErrorCode&) {
        return; // somebody else removed it
    }
    rmdir(mPath.c_str());
}

WnScratchFile::WnScratchFile()
    : mFolder(std::make_unique<WnPrivateFolder>()), mPath(mFolder->GetPath() + "/TEMP.GIF") {}

WnScratchFile::~WnScratchFile() = default;
