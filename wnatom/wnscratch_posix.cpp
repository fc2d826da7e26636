#include "wnatom/wnscratch.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wnfolders_posix.h"
#include "wnatom/wnhash.h"

// A folder is locked for as long as its maker lives, however that ends. Locks are known to one kernel, while
// a folder on a server may serve several machines, so the name identifies the kernel.

namespace {

constexpr std::string_view km_FolderPlaceholder = "XXXXXX";

std::string GetNameStart() {
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string boot;
    std::getline(file, boot);
    return "parvigif-" + std::to_string(WnHash(boot)) + "-";
}

int OpenFolder(int inParent, const char* inPath) {
    return openat(inParent, inPath, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/** @return a descriptor, or -1: with ENOENT when another process took the new folder for left over before it
 *  was locked */
int LockFolder(const std::string& inPath) {
    const int folder = OpenFolder(AT_FDCWD, inPath.c_str());
    if (folder < 0)
        return -1;
    flock(folder, LOCK_EX); // where locks do not work, no other run takes it for a leftover either
    struct stat status {};
    if (fstat(folder, &status) == 0 && status.st_nlink != 0)
        return folder;
    close(folder);
    errno = ENOENT;
    return -1;
}

/** By descriptor: what stands at a path in a folder of everybody's may have changed since the last look. */
void RemoveFilesIn(int inFolder) {
    DIR* const entries = fdopendir(fcntl(inFolder, F_DUPFD_CLOEXEC, 0));
    if (!entries)
        return;
    while (const dirent* entry = readdir(entries))
        unlinkat(inFolder, entry->d_name, 0); // refuses folders
    closedir(entries);
}

void RemoveFolderIfLeftOver(int inParent, const char* inName) {
    const int folder = OpenFolder(inParent, inName);
    if (folder < 0)
        return;
    struct stat status {};
    if (fstat(folder, &status) == 0 && status.st_uid == geteuid() && flock(folder, LOCK_EX | LOCK_NB) == 0) {
        RemoveFilesIn(folder);
        unlinkat(inParent, inName, AT_REMOVEDIR);
    }
    close(folder);
}

void RemoveLeftovers(const std::string& inParent, std::string_view inNameStart) {
    DIR* const parent = opendir(inParent.c_str());
    if (!parent)
        return;
    while (const dirent* entry = readdir(parent)) {
        const std::string_view name = entry->d_name;
        if (name.starts_with(inNameStart) && name.size() == inNameStart.size() + km_FolderPlaceholder.size())
            RemoveFolderIfLeftOver(dirfd(parent), entry->d_name);
    }
    closedir(parent);
}

} // namespace

struct WnPrivateFolder::Hold {
    int mFolder = -1;
};

WnPrivateFolder::WnPrivateFolder() : mHold(std::make_unique<Hold>()) {
    const std::string parent = WnGetTemporaryFolder();
    const std::string nameStart = GetNameStart();
    static const bool isClean = (RemoveLeftovers(parent, nameStart), true);
    static_cast<void>(isClean);
    for (;;) {
        mPath = parent + "/" + nameStart + std::string(km_FolderPlaceholder);
        if (!mkdtemp(mPath.data()))
            ThrowRuntimeError(errno);
        mHold->mFolder = LockFolder(mPath);
        if (mHold->mFolder >= 0)
            return;
        if (errno != ENOENT) {
            const int error = errno;
            rmdir(mPath.c_str());
            ThrowRuntimeError(error);
        }
    }
}

WnPrivateFolder::~WnPrivateFolder() {
    RemoveFilesIn(mHold->mFolder);
    rmdir(mPath.c_str());
    close(mHold->mFolder);
}

std::string WnPrivateFolder::MakePath(const std::string& inName) const {
    return mPath + "/" + inName;
}

struct WnScratchFile::Fixed {};

WnScratchFile::WnScratchFile()
    : mFolder(std::make_unique<WnPrivateFolder>()), mPath(mFolder->MakePath("TEMP.GIF")) {}

WnScratchFile::~WnScratchFile() = default;
