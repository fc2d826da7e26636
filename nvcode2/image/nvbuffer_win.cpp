#include <algorithm>

#include <windows.h>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/image/nvbuffer.h"

void NvBuffer::DoAllocate(std::uint32_t inSize) {
    mHandle = GlobalAlloc(GMEM_MOVEABLE, std::max(inSize, 1u));
    if (!mHandle)
        NvThrow(NvErrorCode::km_OutOfMemory);
    // Locked for good: the address is asked for in inner loops, and 64-bit memory need not be compacted.
    mAddress = static_cast<std::uint8_t*>(GlobalLock(mHandle));
    if (mAddress)
        return;
    GlobalFree(mHandle);
    mHandle = nullptr;
    NvThrow(NvErrorCode::km_OutOfMemory);
}

void NvBuffer::DoFree() {
    if (!mHandle)
        NvThrow(NvErrorCode::km_MissingData);
    GlobalUnlock(mHandle);
    GlobalFree(mHandle);
    mHandle = nullptr;
    mAddress = nullptr;
}
