#include "wnatom/wnfileclaim.h"

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

#include "wnatom/wnhash.h"

// One empty file holds all claims: each is a lock on a single byte of it, at a place that the path's hash
// names. Locks may lie beyond a file's end, and the kernel drops them when their owner goes.

namespace {

off_t PlaceOf(const char* inPath) {
    constexpr std::uint64_t largestPlace = 0x7ffffffffffffffe;
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(inPath, nullptr), &std::free);
    return static_cast<off_t>(WnHash(path ? path.get() : inPath) % largestPlace);
}

} // namespace

struct WnFileClaim::Handle {
    int mLocks = -1;
};

WnFileClaim::WnFileClaim(const std::string& inDataFolder, const char* inPath)
    : mHandle(std::make_unique<Handle>()) {
    mHandle->mLocks =
        open((inDataFolder + "/Parvigif.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (mHandle->mLocks < 0)
        return;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = PlaceOf(inPath);
    lock.l_len = 1;
    if (fcntl(mHandle->mLocks, F_OFD_SETLK, &lock) != 0)
        mIsMine = errno != EAGAIN && errno != EACCES;
}

WnFileClaim::~WnFileClaim() {
    if (mHandle->mLocks >= 0)
        close(mHandle->mLocks);
}
