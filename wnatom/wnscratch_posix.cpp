#include "wnatom/wnscratch.h"

#include <cerrno>
#include <cstdlib>

#include <unistd.h>

#include "nvcode2/nverrorcode.h"
#include "wnatom/wnfolders_posix.h"

WnScratchFile::WnScratchFile() : mFolder(WnGetTemporaryFolder() + "/parvigif-XXXXXX") {
    if (!mkdtemp(mFolder.data()))
        ThrowRuntimeError(errno);
    mPath = mFolder + "/TEMP.GIF";
}

WnScratchFile::~WnScratchFile() {
    unlink(mPath.c_str());
    rmdir(mFolder.c_str());
}
