#include "wnatom/wnfileclaim.h"

#include <windows.h>

#include "wnatom/wnhash.h"

struct WnFileClaim::Handle {
    HANDLE mMutex = nullptr;
};

/** Windows keeps the name of an object for as long as a process holds it. */
WnFileClaim::WnFileClaim(const std::string& /*inDataFolder*/, const char* inPath)
    : mHandle(std::make_unique<Handle>()) {
    std::string path(32768, '\0'); // no longer one can be opened
    const DWORD length = GetFullPathNameA(inPath, static_cast<DWORD>(path.size()), path.data(), nullptr);
    path.resize(length < path.size() ? length : 0);
    CharLowerBuffA(path.data(), static_cast<DWORD>(path.size()));
    const std::string name = "Local\\Parvigif-" + std::to_string(WnHash(path.empty() ? inPath : path));
    mHandle->mMutex = CreateMutexA(nullptr, FALSE, name.c_str());
    mIsMine = !mHandle->mMutex || GetLastError() != ERROR_ALREADY_EXISTS;
}

WnFileClaim::~WnFileClaim() {
    if (mHandle->mMutex)
        CloseHandle(mHandle->mMutex);
}
