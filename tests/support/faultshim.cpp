// Loaded before the C library, this lets the program's n-th file operation fail or be its last.
//
// PARVIGIF_FAULT is one of
//   kill=n   the process dies just before operation n
//   tear=n   the same, but half of what operation n would write is written
//   full=n   from operation n on, the disk is full
//   rot=n    if operation n is a write, other bytes than it should reach the disk unnoticed
//   sync=n   from operation n on, nothing can be flushed to the disk
//   save=n   just before operation n another program adds to ball.gif
// Operations are those that change what is on the disk. Standard streams are left alone.

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

enum class Fault { None, Kill, Tear, Full, Rot, Sync, Save };

constexpr const char* km_Names[] = {"kill", "tear", "full", "rot", "sync", "save"};

struct Plan {
    Fault mFault = Fault::None;
    long mAt = 0;
    long mCount = 0;
};

Plan& GetPlan() {
    static Plan plan = [] {
        Plan read;
        const char* text = std::getenv("PARVIGIF_FAULT");
        const char* equals = text ? std::strchr(text, '=') : nullptr;
        if (!equals)
            return read;
        for (int i = 0; i < 6; ++i)
            if (std::strncmp(text, km_Names[i], static_cast<std::size_t>(equals - text)) == 0)
                read.mFault = static_cast<Fault>(i + 1);
        read.mAt = std::strtol(equals + 1, nullptr, 10);
        return read;
    }();
    return plan;
}

template <typename Function>
Function Next(Function, const char* inName) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, inName));
}

void SaveAnew() {
    for (const char* name : {"ball.gif", "saved"}) { // the second tells that it was done
        const int file = Next(open, "open")(name, O_WRONLY | O_APPEND | O_CREAT, 0600);
        Next(write, "write")(file, "!", 1);
        close(file);
    }
}

/** Counts an operation. Does not return when the process is to die here; returns whether the disk is full. */
bool IsFull() {
    Plan& plan = GetPlan();
    ++plan.mCount;
    if (plan.mFault == Fault::Kill && plan.mCount == plan.mAt)
        raise(SIGKILL);
    if (plan.mFault == Fault::Save && plan.mCount == plan.mAt)
        SaveAnew();
    return plan.mFault == Fault::Full && plan.mCount >= plan.mAt;
}

int Fail() {
    errno = ENOSPC;
    return -1;
}

} // namespace

extern "C" {

int open(const char* inPath, int inFlags, ...) {
    va_list arguments;
    va_start(arguments, inFlags);
    const mode_t mode = (inFlags & O_CREAT) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if ((inFlags & (O_CREAT | O_TRUNC)) && IsFull() && access(inPath, F_OK) != 0)
        return Fail();
    return Next(open, "open")(inPath, inFlags, mode);
}

int mkostemps(char* ioTemplate, int inSuffixLength, int inFlags) {
    return IsFull() ? Fail() : Next(mkostemps, "mkostemps")(ioTemplate, inSuffixLength, inFlags);
}

ssize_t write(int inDescriptor, const void* inBytes, size_t inCount) {
    const auto next = Next(write, "write");
    if (inDescriptor <= STDERR_FILENO)
        return next(inDescriptor, inBytes, inCount);
    Plan& plan = GetPlan();
    if (plan.mFault == Fault::Tear && plan.mCount + 1 == plan.mAt) {
        next(inDescriptor, inBytes, inCount / 2);
        raise(SIGKILL);
    }
    if (plan.mFault == Fault::Rot && plan.mCount + 1 == plan.mAt) {
        std::string rotten(static_cast<const char*>(inBytes), inCount);
        rotten.back() = 'x';
        ++plan.mCount;
        return next(inDescriptor, rotten.data(), inCount);
    }
    return IsFull() ? Fail() : next(inDescriptor, inBytes, inCount);
}

int fsync(int inDescriptor) {
    IsFull();
    const Plan& plan = GetPlan();
    return plan.mFault == Fault::Sync && plan.mCount >= plan.mAt ? Fail()
                                                                 : Next(fsync, "fsync")(inDescriptor);
}

int fchmod(int inDescriptor, mode_t inMode) {
    IsFull();
    return Next(fchmod, "fchmod")(inDescriptor, inMode);
}

int rename(const char* inFrom, const char* inTo) {
    IsFull();
    return Next(rename, "rename")(inFrom, inTo);
}

int renameat2(int inFromFolder, const char* inFrom, int inToFolder, const char* inTo, unsigned inFlags) {
    IsFull();
    return Next(renameat2, "renameat2")(inFromFolder, inFrom, inToFolder, inTo, inFlags);
}

int unlink(const char* inPath) {
    IsFull();
    return Next(unlink, "unlink")(inPath);
}

} // extern "C"
