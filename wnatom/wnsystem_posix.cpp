#include "wnatom/wnsystem.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wnfolders_posix.h"

namespace {

/** "<temporary folder>/Norvek-<user number>", made by this user and closed to others; made or found. */
std::string GetPrivateTemporaryFolder() {
    std::string folder = WnGetTemporaryFolder() + "/Norvek-" + std::to_string(geteuid());
    mkdir(folder.c_str(), S_IRWXU);
    struct stat status {};
    const bool ours = lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
                      status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    if (ours)
        return folder;
    // Another user owns that name: better no log than one under their control.
    return "/nonexistent";
}

[[noreturn]] void ThrowOpenError(int inSystemError) {
    if (inSystemError == EACCES)
        NvThrowWithSystemError(NvErrorCode::km_OpenDenied, inSystemError);
    ThrowRuntimeError(inSystemError);
}

/** The entries of a folder that are of one type, by their names.
 *  @param inFlags  of fstatat: whether a link counts as what it leads to */
std::vector<std::string> ListEntries(const char* inFolder, mode_t inType, int inFlags) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(inFolder), &closedir);
    if (!folder)
        ThrowOpenError(errno);
    std::vector<std::string> names;
    while (const dirent* entry = readdir(folder.get())) {
        struct stat status {};
        if (fstatat(dirfd(folder.get()), entry->d_name, &status, inFlags) == 0 &&
            (status.st_mode & S_IFMT) == inType)
            names.emplace_back(entry->d_name);
    }
    std::sort(names.begin(), names.end()); // std::string compares its characters as unsigned bytes
    return names;
}

std::int64_t Nanoseconds(const struct timespec& inTime) {
    return inTime.tv_sec * 1'000'000'000 + inTime.tv_nsec;
}

WnFileState MakeState(const struct stat& inStatus) {
    WnFileState state;
    state.mIdentity = {static_cast<std::uint64_t>(inStatus.st_dev),
                       static_cast<std::uint64_t>(inStatus.st_ino)};
    state.mSize = static_cast<std::uint64_t>(inStatus.st_size);
    state.mModified = Nanoseconds(inStatus.st_mtim);
    state.mChanged = Nanoseconds(inStatus.st_ctim);
    return state;
}

} // namespace

std::uint64_t WnGetPhysicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

std::string WnGetDataFolder() {
    std::string base = WnGetPathFromEnvironment("XDG_STATE_HOME");
    if (base.empty())
        base = WnGetHomeFolder() + "/.local/state";
    std::string folder = base + "/Norvek";
    return WnMakeFolders(folder) ? folder : GetPrivateTemporaryFolder();
}

WnFileKind WnGetFileKind(const char* inPath) {
    struct stat status {};
    if (stat(inPath, &status) == 0) {
        if (S_ISREG(status.st_mode))
            return WnFileKind::km_RegularFile;
        return S_ISDIR(status.st_mode) ? WnFileKind::km_Folder : WnFileKind::km_Other;
    }
    if (errno != ENOENT && errno != ENOTDIR)
        ThrowOpenError(errno);
    return lstat(inPath, &status) == 0 ? WnFileKind::km_Other : WnFileKind::km_Missing;
}

std::optional<WnFileIdentity> WnGetFileIdentity(const char* inPath) {
    const std::optional<WnFileState> state = WnGetFileState(inPath);
    return state ? std::optional(state->mIdentity) : std::nullopt;
}

std::optional<WnFileState> WnGetFileState(const char* inPath) {
    struct stat status {};
    return stat(inPath, &status) == 0 ? std::optional(MakeState(status)) : std::nullopt;
}

std::optional<WnFileState> WnGetOpenFileState(int inDescriptor) {
    struct stat status {};
    return fstat(inDescriptor, &status) == 0 ? std::optional(MakeState(status)) : std::nullopt;
}

std::vector<std::string> WnListFiles(const char* inFolder) {
    return ListEntries(inFolder, S_IFREG, 0);
}

std::vector<std::string> WnListFolders(const char* inFolder) {
    std::vector<std::string> names = ListEntries(inFolder, S_IFDIR, AT_SYMLINK_NOFOLLOW);
    std::erase_if(names, [](const std::string& name) { return name == "." || name == ".."; });
    return names;
}

std::filesystem::path WnMakePath(const std::string& inPath) {
    return inPath;
}

bool WnIsSeparator(char inCharacter) {
    return inCharacter == '/';
}

char WnGetSeparator() {
    return '/';
}
