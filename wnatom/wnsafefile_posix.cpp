#include "wnatom/wnsafefile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wnfolders_posix.h"
#include "wnatom/wnhash.h"

namespace {

constexpr std::string_view km_Prefix = ".parvigif-";
constexpr std::string_view km_Placeholder = "XXXXXX";
constexpr std::string_view km_Suffix = ".tmp";

constexpr int km_ReadFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

/** Closed at the end of the scope. */
class Descriptor {
public:
    explicit Descriptor(int inDescriptor) : mDescriptor(inDescriptor) {}
    ~Descriptor() {
        if (mDescriptor >= 0)
            close(mDescriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return mDescriptor; }

private:
    int mDescriptor;
};

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

[[noreturn]] void ThrowReadOnly(int inSystemError) {
    NvThrowWithSystemError(NvErrorCode::km_PermissionDenied, inSystemError);
}

/** Whether something may not be renamed or removed, whatever its permissions say. A folder that only takes
 *  new names would keep every temporary file for good. */
bool IsFixed(const std::string& inPath) {
    struct statx status {};
    return statx(AT_FDCWD, inPath.c_str(), 0, STATX_TYPE, &status) == 0 &&
           (status.stx_attributes & (STATX_ATTR_APPEND | STATX_ATTR_IMMUTABLE)) != 0;
}

/** Creates a file of a name that was not there, marks it as in use, and returns its descriptor. */
int CreateTemporary(const std::string& inFolder, std::string& outPath) {
    if (IsFixed(inFolder))
        ThrowReadOnly(EPERM);
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

/** What a call writes that, given no room, returns how much it needs; nothing when it fails. */
template <typename Call>
std::optional<std::string> ReadSized(Call inCall) {
    const ssize_t needed = inCall(nullptr, 0);
    if (needed < 0)
        return std::nullopt;
    std::string text(static_cast<std::size_t>(needed), '\0');
    const ssize_t size = needed == 0 ? 0 : inCall(text.data(), text.size());
    if (size < 0)
        return std::nullopt;
    text.resize(static_cast<std::size_t>(size));
    return text;
}

/** What the name carries besides its bytes: tags and comments that people and desktops attach, access lists.
 *  File systems differ in what they allow, so each is copied where it goes. */
void CopyExtendedAttributes(const char* inFromPath, int inToDescriptor) {
    const auto names =
        ReadSized([&](char* outText, std::size_t inSize) { return listxattr(inFromPath, outText, inSize); });
    for (std::size_t at = 0; names && at < names->size();) {
        const char* const name = names->c_str() + at;
        at += std::string_view(name).size() + 1;
        const auto value = ReadSized(
            [&](char* outText, std::size_t inSize) { return getxattr(inFromPath, name, outText, inSize); });
        if (value)
            fsetxattr(inToDescriptor, name, value->data(), value->size(), 0);
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

void CheckWritable(const std::string& inPath, const struct stat& inStatus, int inWanted) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if ((inStatus.st_mode & anyWrite) == 0)
        ThrowReadOnly(EACCES);
    if (faccessat(AT_FDCWD, inPath.c_str(), inWanted, AT_EACCESS) != 0)
        ThrowReadOnly(errno);
    if (IsFixed(inPath))
        ThrowReadOnly(EPERM);
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
    constexpr int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const int writable = openat(inFolder, inName, O_RDWR | flags); // locks on servers need that
    const Descriptor file(writable >= 0 ? writable : openat(inFolder, inName, O_RDONLY | flags));
    struct stat status {};
    if (fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) && !IsLocked(file.Get()))
        unlinkat(inFolder, inName, 0);
}

/** State of what stands at a path, no link followed. */
std::optional<WnFileState> GetStateAt(const std::string& inPath) {
    const Descriptor file(open(inPath.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    return WnGetOpenFileState(file.Get());
}

bool LeadsTo(const std::string& inPath, int inDescriptor) {
    const auto there = GetStateAt(inPath);
    const auto open = WnGetOpenFileState(inDescriptor);
    return there && open && there->mIdentity == open->mIdentity;
}

/** @throws NvErrorCode  by the runtime's error number */
std::uint64_t HashContent(int inDescriptor) {
    std::array<char, 32768> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): read into
    std::uint64_t hash = WnHash({});
    off_t at = 0;
    for (std::size_t held = buffer.size(); held == buffer.size();) {
        held = 0; // a full buffer each time, so that words are the same whatever a read returns
        while (held < buffer.size()) {
            const ssize_t size = pread(inDescriptor, buffer.data() + held, buffer.size() - held, at);
            if (size < 0 && errno == EINTR)
                continue;
            if (size < 0)
                ThrowRuntimeError(errno);
            if (size == 0)
                break;
            held += static_cast<std::size_t>(size);
            at += size;
        }
        hash = WnHashFast({buffer.data(), held}, hash);
    }
    return hash;
}

/** A file as it was seen, and a hash of its bytes, which shows what the times cannot: exchanging names itself
 *  changes the times of both files. */
struct Seen {
    WnFileState mState;
    std::uint64_t mHash = 0;

    bool IsAt(const std::string& inPath) const {
        const Descriptor file(open(inPath.c_str(), km_ReadFlags));
        const auto state = WnGetOpenFileState(file.Get());
        return state && state->mIdentity == mState.mIdentity && state->mSize == mState.mSize &&
               state->mModified == mState.mModified && HashContent(file.Get()) == mHash;
    }
};

int Exchange(const std::string& inOne, const std::string& inOther) {
    return renameat2(AT_FDCWD, inOne.c_str(), AT_FDCWD, inOther.c_str(), RENAME_EXCHANGE);
}

/** Gives a name back the file that was taken from it, unless another has been saved there in the meantime.
 *  @param inOwnDescriptor  of the file at the name now, unless another program has replaced it */
void PutBack(const std::string& inTaken, const std::string& inName, int inOwnDescriptor) {
    if (Exchange(inTaken, inName) != 0) {
        if (std::rename(inTaken.c_str(), inName.c_str()) != 0)
            ThrowRuntimeError(errno);
    } else if (!LeadsTo(inTaken, inOwnDescriptor)) {
        Exchange(inTaken, inName);
        unlink(inTaken.c_str()); // of two versions that another program saved in turn, the older
    }
}

enum class Placed { km_Yes, km_No, km_CannotExchange };

/** Exchanges the names, and back when the target is no longer what was seen. */
Placed PlaceByExchange(const std::string& inTemporary, const std::string& inTarget, int inDescriptor,
                       const Seen& inSeen) {
    if (Exchange(inTemporary, inTarget) != 0)
        return errno == ENOENT ? Placed::km_No : Placed::km_CannotExchange;
    bool isTheSeen = false;
    try {
        isTheSeen = inSeen.IsAt(inTemporary);
    } catch (const NvErrorCode&) {
        PutBack(inTemporary, inTarget, inDescriptor);
        throw;
    }
    if (!isTheSeen) {
        PutBack(inTemporary, inTarget, inDescriptor);
        return Placed::km_No;
    }
    unlink(inTemporary.c_str());
    return Placed::km_Yes;
}

} // namespace

WnSafeFile::WnSafeFile(const char* inTargetPath, const char* inModelPath)
    : mGivenPath(inTargetPath),
      mTargetPath(ResolveTarget(inTargetPath)),
      mModelPath(inModelPath ? inModelPath : mTargetPath) {
    mDescriptor = CreateTemporary(WnGetFolderOf(mTargetPath), mTemporaryPath);
}

WnSafeFile::~WnSafeFile() {
    if (!mCommitted && LeadsTo(mTemporaryPath, mDescriptor))
        unlink(mTemporaryPath.c_str());
    close(mDescriptor);
}

std::FILE* WnSafeFile::OpenStream() {
    const int descriptor = fcntl(mDescriptor, F_DUPFD_CLOEXEC, 0);
    std::FILE* const stream = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
    if (!stream && descriptor >= 0)
        close(descriptor);
    return stream;
}

void WnSafeFile::Finish() {
    if (mIsFinished)
        return;
    TakeAttributesOf(mModelPath, mDescriptor);
    if (mModified) {
        const struct timespec time = {*mModified / 1'000'000'000, *mModified % 1'000'000'000};
        const struct timespec times[] = {time, time};
        futimens(mDescriptor, times); // a file of today is better than none
    }
    while (fsync(mDescriptor) != 0) {
        if (errno != EINTR)
            ThrowRuntimeError(errno);
    }
    mIsFinished = true;
}

void WnSafeFile::Commit() {
    Finish();
    if (std::rename(mTemporaryPath.c_str(), mTargetPath.c_str()) != 0)
        ThrowRuntimeError(errno);
    mCommitted = true;
    FlushFolder(WnGetFolderOf(mTargetPath));
}

bool WnSafeFile::IsAsSeen(const WnFileState& inSeen) const {
    return WnGetFileState(mGivenPath.c_str()) == inSeen && GetStateAt(mTargetPath) == inSeen;
}

std::optional<WnFileState> WnSafeFile::CommitOver(const WnFileState& inSeen) {
    Finish();
    const Descriptor target(open(mTargetPath.c_str(), km_ReadFlags));
    if (target.Get() < 0)
        return std::nullopt;
    // It stands at the temporary name for a moment, where another run might take it for left over.
    flock(target.Get(), LOCK_EX | LOCK_NB);
    const Seen seen = {inSeen, HashContent(target.Get())};
    const std::uint64_t hash = HashContent(mDescriptor);
    const auto finished = WnGetOpenFileState(mDescriptor);
    if (!IsAsSeen(inSeen) || !LeadsTo(mTemporaryPath, mDescriptor))
        return std::nullopt;
    const Placed placed = PlaceByExchange(mTemporaryPath, mTargetPath, mDescriptor, seen);
    if (placed == Placed::km_No)
        return std::nullopt;
    if (placed == Placed::km_CannotExchange && std::rename(mTemporaryPath.c_str(), mTargetPath.c_str()) != 0)
        ThrowRuntimeError(errno);
    mCommitted = true;
    const auto state = WnGetOpenFileState(mDescriptor);
    FlushFolder(WnGetFolderOf(mTargetPath));
    // If it has been written to since, it must not count as the file that we know.
    return state && HashContent(mDescriptor) == hash ? state : finished;
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

std::string WnGetTargetFolder(const char* inPath) {
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(inPath, nullptr), &std::free);
    return path ? WnGetFolderOf(path.get()) : std::string();
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
