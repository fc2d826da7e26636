// Loaded before the C library, this lets something happen at the program's n-th file-system call.
//
// PARVIGIF_FAULT is one of
//   full=n         from change n on, the disk is full
//   rot=n          if change n is a write, other bytes than it should reach the disk unnoticed
//   tear=n         if change n is a write, the process dies when half of it is written
//   die=n          the process dies just before change n
//   sync=n         from call n on, nothing can be flushed to the disk
//   fail=n:ERROR   call n fails with that number of errno
//   short=n        call n transfers a single byte, if it transfers any
//   other=n        before call n, somebody else acts: the command in PARVIGIF_ACTION runs to its end
// Changes are the calls that change what is on the disk; calls are all those that could fail. Standard
// streams are left alone. PARVIGIF_COUNT names a file that is given the number of calls at the end, or of
// changes when the fault is about them.

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

enum class Fault { None, Full, Rot, Tear, Die, Sync, Fail, Short, Other };

constexpr const char* km_Names[] = {"full", "rot", "tear", "die", "sync", "fail", "short", "other"};

struct Plan {
    Fault mFault = Fault::None;
    long mAt = 0;
    int mError = 0;
    long mCalls = 0;
    bool mIsActing = false;
};

Fault FaultNamed(const char* inText) {
    int fault = 0;
    for (const char* name : km_Names) {
        ++fault;
        if (std::strncmp(inText, name, std::strlen(name)) == 0)
            return static_cast<Fault>(fault);
    }
    return Fault::None;
}

Plan& GetPlan() {
    static Plan plan = [] {
        Plan read;
        const char* text = std::getenv("PARVIGIF_FAULT");
        const char* equals = text ? std::strchr(text, '=') : nullptr;
        if (!equals)
            return read;
        read.mFault = FaultNamed(text);
        read.mAt = std::strtol(equals + 1, nullptr, 10);
        if (const char* colon = std::strchr(equals, ':'))
            read.mError = static_cast<int>(std::strtol(colon + 1, nullptr, 10));
        return read;
    }();
    return plan;
}

template <typename Function>
Function Next(Function, const char* inName) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, inName));
}

void LetOtherAct(Plan& ioPlan) {
    ioPlan.mIsActing = true;
    unsetenv("LD_PRELOAD");
    const int error = errno;
    if (std::system(std::getenv("PARVIGIF_ACTION")) != 0)
        raise(SIGKILL); // the driver sees that nobody asked for it
    errno = error;
    ioPlan.mIsActing = false;
}

/** Counts a call. Does not return when the process is to die here. @return whether the call is to fail, errno
 *  set */
bool IsHit(bool inIsChange = false) {
    Plan& plan = GetPlan();
    if (plan.mFault != Fault::None && plan.mFault <= Fault::Die && !inIsChange)
        return false;
    if (plan.mIsActing || ++plan.mCalls != plan.mAt)
        return false;
    if (plan.mFault == Fault::Die)
        raise(SIGKILL);
    if (plan.mFault == Fault::Other)
        LetOtherAct(plan);
    errno = plan.mError;
    return plan.mFault == Fault::Fail;
}

/** @return whether the disk has come to be in that state */
bool IsSince(Fault inFault) {
    return GetPlan().mFault == inFault && GetPlan().mCalls >= GetPlan().mAt;
}

bool IsNow(Fault inFault) {
    return GetPlan().mFault == inFault && GetPlan().mCalls == GetPlan().mAt;
}

int FailAsFull() {
    errno = ENOSPC;
    return -1;
}

__attribute__((destructor)) void ReportCount() {
    const char* path = std::getenv("PARVIGIF_COUNT");
    if (!path)
        return;
    const long calls = GetPlan().mCalls;
    GetPlan() = Plan();
    const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dprintf(file, "%ld", calls);
}

mode_t ModeOf(int inFlags, va_list inArguments) {
    return (inFlags & O_CREAT) != 0 ? va_arg(inArguments, mode_t) : 0;
}

} // namespace

// A call that only fails, dies or waits for somebody else to act.
#define PLAIN_CALL(RESULT, FAILURE, NAME, PARAMETERS, ARGUMENTS)                                             \
    RESULT NAME PARAMETERS {                                                                                 \
        return IsHit() ? FAILURE : Next(NAME, #NAME) ARGUMENTS;                                              \
    }

#define CHANGE(NAME, PARAMETERS, ARGUMENTS)                                                                  \
    int NAME PARAMETERS {                                                                                    \
        return IsHit(true) ? -1 : Next(NAME, #NAME) ARGUMENTS;                                               \
    }

extern "C" {

int open(const char* inPath, int inFlags, ...) {
    va_list arguments;
    va_start(arguments, inFlags);
    const mode_t mode = ModeOf(inFlags, arguments);
    va_end(arguments);
    if (IsHit((inFlags & (O_CREAT | O_TRUNC)) != 0))
        return -1;
    if ((inFlags & O_CREAT) != 0 && IsSince(Fault::Full) && access(inPath, F_OK) != 0)
        return FailAsFull();
    return Next(open, "open")(inPath, inFlags, mode);
}

int openat(int inFolder, const char* inPath, int inFlags, ...) {
    va_list arguments;
    va_start(arguments, inFlags);
    const mode_t mode = ModeOf(inFlags, arguments);
    va_end(arguments);
    return IsHit() ? -1 : Next(openat, "openat")(inFolder, inPath, inFlags, mode);
}

FILE* fopen(const char* inPath, const char* inMode) {
    return IsHit() ? nullptr : Next(fopen, "fopen")(inPath, inMode);
}

int mkostemps(char* ioTemplate, int inSuffixLength, int inFlags) {
    if (IsHit(true))
        return -1;
    return IsSince(Fault::Full) ? FailAsFull()
                                : Next(mkostemps, "mkostemps")(ioTemplate, inSuffixLength, inFlags);
}

ssize_t write(int inDescriptor, const void* inBytes, size_t inCount) {
    const auto next = Next(write, "write");
    if (inDescriptor <= STDERR_FILENO)
        return next(inDescriptor, inBytes, inCount);
    if (IsHit(true))
        return -1;
    if (IsSince(Fault::Full))
        return FailAsFull();
    if (IsNow(Fault::Tear)) {
        next(inDescriptor, inBytes, inCount / 2);
        raise(SIGKILL);
    }
    std::string bytes(static_cast<const char*>(inBytes), inCount);
    if (IsNow(Fault::Rot) && inCount > 0)
        bytes.back() = 'x';
    return next(inDescriptor, bytes.data(), IsNow(Fault::Short) && inCount > 0 ? 1 : inCount);
}

ssize_t read(int inDescriptor, void* outBytes, size_t inCount) {
    const auto next = Next(read, "read");
    if (inDescriptor <= STDERR_FILENO)
        return next(inDescriptor, outBytes, inCount);
    return IsHit() ? -1 : next(inDescriptor, outBytes, IsNow(Fault::Short) && inCount > 0 ? 1 : inCount);
}

ssize_t pread(int inDescriptor, void* outBytes, size_t inCount, off_t inAt) {
    return IsHit() ? -1
                   : Next(pread, "pread")(inDescriptor, outBytes,
                                          IsNow(Fault::Short) && inCount > 0 ? 1 : inCount, inAt);
}

int fsync(int inDescriptor) {
    if (IsHit())
        return -1;
    return IsSince(Fault::Sync) ? FailAsFull() : Next(fsync, "fsync")(inDescriptor);
}

CHANGE(fchmod, (int inDescriptor, mode_t inMode), (inDescriptor, inMode))
CHANGE(rename, (const char* inFrom, const char* inTo), (inFrom, inTo))
CHANGE(renameat2, (int inFromFolder, const char* inFrom, int inToFolder, const char* inTo, unsigned inFlags),
       (inFromFolder, inFrom, inToFolder, inTo, inFlags))
CHANGE(unlink, (const char* inPath), (inPath))
PLAIN_CALL(int, -1, close, (int inDescriptor), (inDescriptor))
PLAIN_CALL(int, -1, stat, (const char* inPath, struct stat* outStatus), (inPath, outStatus))
PLAIN_CALL(int, -1, lstat, (const char* inPath, struct stat* outStatus), (inPath, outStatus))
PLAIN_CALL(int, -1, fstat, (int inDescriptor, struct stat* outStatus), (inDescriptor, outStatus))
PLAIN_CALL(int, -1, fstatat, (int inFolder, const char* inPath, struct stat* outStatus, int inFlags),
           (inFolder, inPath, outStatus, inFlags))
PLAIN_CALL(int, -1, statx,
           (int inFolder, const char* inPath, int inFlags, unsigned inMask, struct statx* outStatus),
           (inFolder, inPath, inFlags, inMask, outStatus))
PLAIN_CALL(int, -1, faccessat, (int inFolder, const char* inPath, int inWanted, int inFlags),
           (inFolder, inPath, inWanted, inFlags))
PLAIN_CALL(off_t, -1, lseek, (int inDescriptor, off_t inAt, int inFrom), (inDescriptor, inAt, inFrom))
PLAIN_CALL(int, -1, fchown, (int inDescriptor, uid_t inUser, gid_t inGroup), (inDescriptor, inUser, inGroup))
PLAIN_CALL(int, -1, futimens, (int inDescriptor, const struct timespec* inTimes), (inDescriptor, inTimes))
PLAIN_CALL(int, -1, utimensat,
           (int inFolder, const char* inPath, const struct timespec* inTimes, int inFlags),
           (inFolder, inPath, inTimes, inFlags))
PLAIN_CALL(int, -1, flock, (int inDescriptor, int inWhat), (inDescriptor, inWhat))
PLAIN_CALL(int, -1, mkdir, (const char* inPath, mode_t inMode), (inPath, inMode))
PLAIN_CALL(char*, nullptr, mkdtemp, (char* ioTemplate), (ioTemplate))
PLAIN_CALL(int, -1, unlinkat, (int inFolder, const char* inPath, int inFlags), (inFolder, inPath, inFlags))
PLAIN_CALL(int, -1, link, (const char* inFrom, const char* inTo), (inFrom, inTo))
PLAIN_CALL(char*, nullptr, realpath, (const char* inPath, char* outPath), (inPath, outPath))
PLAIN_CALL(ssize_t, -1, listxattr, (const char* inPath, char* outNames, size_t inSize),
           (inPath, outNames, inSize))
PLAIN_CALL(DIR*, nullptr, opendir, (const char* inPath), (inPath))

} // extern "C"
