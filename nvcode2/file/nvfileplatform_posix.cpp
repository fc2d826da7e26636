#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "nvcode2/file/nvfileplatform.h"

namespace {

// A file that its owner may only write could not be read back to be checked.
constexpr mode_t km_OwnerOnly = S_IRUSR | S_IWUSR;

/** Repeats a call for as long as signals interrupt it. */
template <typename Call>
auto Uninterrupted(Call inCall) {
    auto result = inCall();
    while (result == -1 && errno == EINTR)
        result = inCall();
    return result;
}

/** open() that keeps the descriptor from child processes and never waits: opening a pipe would block until
 * its other end is opened. On a regular file O_NONBLOCK has no effect. */
std::int32_t OpenWithoutWaiting(const char* inPath, int inFlags) {
    return Uninterrupted(
        [=] { return ::open(inPath, inFlags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, km_OwnerOnly); });
}

/** 0 for a regular file, otherwise an errno that says why it cannot be read like one. */
int CheckRegular(std::int32_t inDescriptor) {
    struct stat status;
    if (::fstat(inDescriptor, &status) != 0)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    return S_ISREG(status.st_mode) ? 0 : ESPIPE;
}

} // namespace

std::int32_t NvFilePlatform::Open(const char* inPath, Access inAccess) {
    if (inAccess == Access::km_Write)
        return OpenWithoutWaiting(inPath, O_WRONLY | O_CREAT | O_TRUNC);

    const std::int32_t descriptor =
        OpenWithoutWaiting(inPath, inAccess == Access::km_Read ? O_RDONLY : O_RDWR);
    if (descriptor == -1)
        return -1;
    if (const int error = CheckRegular(descriptor)) {
        ::close(descriptor);
        errno = error;
        return -1;
    }
    return descriptor;
}

std::int32_t NvFilePlatform::Close(std::int32_t inDescriptor) {
    // An interrupted close has released the descriptor; calling again could close another file's.
    const int result = ::close(inDescriptor);
    return result == -1 && errno == EINTR ? 0 : result;
}

std::int64_t NvFilePlatform::Read(std::int32_t inDescriptor, void* outBuffer, std::uint32_t inCount) {
    return Uninterrupted([=] { return ::read(inDescriptor, outBuffer, inCount); });
}

std::int32_t NvFilePlatform::Write(std::int32_t inDescriptor, const void* inBuffer, std::uint32_t inCount) {
    const char* rest = static_cast<const char*>(inBuffer);
    std::size_t count = inCount;
    while (count > 0) {
        // A signal or an almost full disk may cut a write short; writing the rest shows which it was.
        const ssize_t written = Uninterrupted([=] { return ::write(inDescriptor, rest, count); });
        if (written > 0) {
            rest += written;
            count -= static_cast<std::size_t>(written);
            continue;
        }
        if (written == 0 || errno == EDQUOT || errno == EFBIG)
            errno = ENOSPC;
        return -1;
    }
    return 0;
}

std::int64_t NvFilePlatform::Seek(std::int32_t inDescriptor, std::int64_t inOffset, int inOrigin) {
    return ::lseek(inDescriptor, inOffset, inOrigin);
}

std::int64_t NvFilePlatform::GetLength(std::int32_t inDescriptor) {
    struct stat status;
    return ::fstat(inDescriptor, &status) == 0 ? status.st_size : -1;
}

std::int32_t NvFilePlatform::SetLength(std::int32_t inDescriptor, std::int64_t inLength) {
    return Uninterrupted([=] { return ::ftruncate(inDescriptor, inLength); });
}

std::int32_t NvFilePlatform::Flush(std::int32_t inDescriptor) {
    return Uninterrupted([=] { return ::fsync(inDescriptor); });
}

std::int32_t NvFilePlatform::Create(const char* inPath) {
    const std::int32_t descriptor = OpenWithoutWaiting(inPath, O_RDWR | O_CREAT | O_TRUNC);
    return descriptor == -1 ? -1 : Close(descriptor);
}

std::int32_t NvFilePlatform::Remove(const char* inPath) {
    return ::unlink(inPath);
}
