#include "wnatom/wnsafefile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wnfolders_posix.h"

namespace {

constexpr std::string_view km_Prefix = ".parvigif-";
constexpr std::string_view km_Placeholder = "XXXXXX";
constexpr std::string_view km_Suffix = ".tmp";

std::string GetRealPath(const std::string& inPath) {
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(inPath.c_str(), nullptr), &std::free);
    if (!path)
        ThrowRuntimeError(errno);
    return path.get();
}

/** The path with every symbolic link resolved; the last part may be missing, but not a link to nothing. */
std::string ResolveTarget(const std::string& inPath) {
    struct stat status {};
    if (lstat(inPath.c_str(), &status) == 0)
        return GetRealPath(inPath);
    if (errno != ENOENT)
        ThrowRuntimeError(errno);
    const std::string folder = GetRealPath(WnGetFolderOf(inPath));
    return (folder == "/" ? "" : folder) + "/" + inPath.substr(inPath.rfind('/') + 1);
}

bool IsLocked(int inDescriptor) {
    return flock(inDescriptor, LOCK_EX | LOCK_NB) != 0;
}

bool IsGone(int inDescriptor) {
    struct stat status {};
    return fstat(inDescriptor, &status) != 0 || status.st_nlink == 0;
}

/** Creates a file of a name that was not there, marks it as in use, and returns its descriptor. */
int CreateTemporary(const std::string& inFolder, std::string& outPath) {
    const std::string pattern = (inFolder == "/" ? "/" : inFolder + "/") + std::string(km_Prefix) +
                                std::string(km_Placeholder) + std::string(km_Suffix);
    for (;;) {
        outPath = pattern;
        const int descriptor = mkostemps(outPath.data(), static_cast<int>(km_Suffix.size()), O_CLOEXEC);
        if (descriptor < 0)
            ThrowRuntimeError(errno);
        flock(descriptor, LOCK_EX);
        // Another run may have taken it for a leftover before it was locked.
        if (!IsGone(descriptor))
            return descriptor;
        close(descriptor);
    }
}

/** What the name carries besides its bytes: tags and comments that people and desktops attach, access lists.
 *  File systems differ in what they allow, so each is copied where it goes. */
void CopyExtendedAttributes(const char* inFromPath, int inToDescriptor) {
    std::vector<char> names(64 * 1024);
    const ssize_t namesSize = listxattr(inFromPath, names.data(), names.size());
    std::vector<char> value(64 * 1024);
    for (ssize_t at = 0; at < namesSize;) {
        const char* name = names.data() + at;
        at += static_cast<ssize_t>(std::string_view(name).size()) + 1;
        const ssize_t size = getxattr(inFromPath, name, value.data(), value.size());
        if (size >= 0)
            fsetxattr(inToDescriptor, name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

mode_t GetDefaultMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return (S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH) & ~mask;
}

/** Owner first: changing it clears the set-user bits that the mode may carry. */
void TakeAttributesOf(const std::string& inModelPath, int inDescriptor) {
    struct stat model {};
    if (stat(inModelPath.c_str(), &model) != 0) {
        if (fchmod(inDescriptor, GetDefaultMode()) != 0)
            ThrowRuntimeError(errno);
        return;
    }
    mode_t mode = model.st_mode & ALLPERMS;
    if (fchown(inDescriptor, model.st_uid, model.st_gid) != 0 &&
        fchown(inDescriptor, static_cast<uid_t>(-1), model.st_gid) != 0)
        mode &= ACCESSPERMS;
    CopyExtendedAttributes(inModelPath.c_str(), inDescriptor);
    // Some file systems know no permissions; the file is worth more than its mode.
    if (fchmod(inDescriptor, mode) != 0 && errno != EPERM && errno != ENOTSUP)
        ThrowRuntimeError(errno);
}

/** Makes a rename durable. The renamed file is whole either way, so a refusal is no failure. */
void FlushFolder(const std::string& inFolder) {
    const int folder = open(inFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    fsync(folder);
    close(folder);
}

[[noreturn]] void ThrowReadOnly(int inSystemError) {
    NvThrowWithSystemError(NvErrorCode::km_PermissionDenied, inSystemError);
}

void CheckWritable(const std::string& inPath, const struct stat& inStatus, int inWanted) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if ((inStatus.st_mode & anyWrite) == 0)
        ThrowReadOnly(EACCES);
    if (faccessat(AT_FDCWD, inPath.c_str(), inWanted, AT_EACCESS) != 0)
        ThrowReadOnly(errno);
}

/** In a folder such as /tmp only a file's owner may replace it. */
bool IsHeldBySticky(const struct stat& inFolder, const struct stat& inFile) {
    const uid_t user = geteuid();
    return (inFolder.st_mode & S_ISVTX) != 0 && user != 0 && user != inFile.st_uid && user != inFolder.st_uid;
}

struct stat GetStatus(const std::string& inPath) {
    struct stat status {};
    if (stat(inPath.c_str(), &status) != 0)
        ThrowRuntimeError(errno);
    return status;
}

bool IsTemporaryName(std::string_view inName) {
    return inName.size() == km_Prefix.size() + km_Placeholder.size() + km_Suffix.size() &&
           inName.starts_with(km_Prefix) && inName.ends_with(km_Suffix);
}

void RemoveIfLeftOver(int inFolder, const char* inName) {
    const int file = openat(inFolder, inName, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return;
    struct stat status {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() && !IsLocked(file))
        unlinkat(inFolder, inName, 0);
    close(file);
}

} // namespace

WnSafeFile::WnSafeFile(const char* inTargetPath, const char* inModelPath)
    : mTargetPath(ResolveTarget(inTargetPath)), mModelPath(inModelPath ? inModelPath : mTargetPath) {
    mDescriptor = CreateTemporary(WnGetFolderOf(mTargetPath), mTemporaryPath);
}

WnSafeFile::~WnSafeFile() {
    if (!mCommitted)
        unlink(mTemporaryPath.c_str());
    close(mDescriptor);
}

void WnSafeFile::Finish() {
    TakeAttributesOf(mModelPath, mDescriptor);
    if (fsync(mDescriptor) != 0)
        ThrowRuntimeError(errno);
}

void WnSafeFile::Commit() {
    Finish();
    if (std::rename(mTemporaryPath.c_str(), mTargetPath.c_str()) != 0)
        ThrowRuntimeError(errno);
    mCommitted = true;
    FlushFolder(WnGetFolderOf(mTargetPath));
}

bool WnSafeFile::CommitUnlessPresent() {
    Finish();
    if (renameat2(AT_FDCWD, mTemporaryPath.c_str(), AT_FDCWD, mTargetPath.c_str(), RENAME_NOREPLACE) == 0) {
        mCommitted = true;
    } else if (errno == EEXIST) {
        return false;
    } else if (link(mTemporaryPath.c_str(), mTargetPath.c_str()) !=
               0) { // not every file system has the first
        if (errno == EEXIST)
            return false;
        ThrowRuntimeError(errno);
    }
    FlushFolder(WnGetFolderOf(mTargetPath));
    return true;
}

void WnCheckReplaceable(const char* inPath) {
    const std::string path = GetRealPath(inPath);
    const std::string folder = WnGetFolderOf(path);
    const struct stat fileStatus = GetStatus(path);
    const struct stat folderStatus = GetStatus(folder);
    CheckWritable(path, fileStatus, W_OK);
    CheckWritable(folder, folderStatus, W_OK | X_OK);
    if (IsHeldBySticky(folderStatus, fileStatus))
        ThrowReadOnly(EPERM);
}

void WnRemoveLeftovers(const char* inFolder) {
    DIR* folder = opendir(inFolder);
    if (!folder)
        return;
    while (const dirent* entry = readdir(folder)) {
        if (IsTemporaryName(entry->d_name))
            RemoveIfLeftOver(dirfd(folder), entry->d_name);
    }
    closedir(folder);
}
