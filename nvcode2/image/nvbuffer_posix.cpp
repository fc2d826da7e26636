#include "nvcode2/image/nvbuffer.h"

#include <algorithm>
#include <cstdlib>

#include "nvcode2/base/nverrorcode.h"

void NvBuffer::DoAllocate(std::uint32_t inSize) {
    mHandle = std::malloc(std::max(inSize, 1u));
    if (!mHandle)
        NvThrow(NvErrorCode::km_OutOfMemory);
    mAddress = static_cast<std::uint8_t*>(mHandle);
}

void NvBuffer::DoFree() {
    if (!mHandle)
        NvThrow(NvErrorCode::km_MissingData);
    std::free(mHandle);
    mHandle = nullptr;
    mAddress = nullptr;
}
