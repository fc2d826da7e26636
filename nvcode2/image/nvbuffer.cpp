#include "nvcode2/image/nvbuffer.h"

#include <limits>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"

NvBaseBuffer::~NvBaseBuffer() = default;

std::unique_ptr<NvBaseBuffer> NvBaseBuffer::Clone() const {
    NvAssert(0);
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvBaseBuffer::Allocate(std::uint32_t inSize) {
    NvAssert(!mAllocatedFlag);
    DoAllocate(inSize);
    mSize = inSize;
    mAllocatedFlag = true;
}

void NvBaseBuffer::Free() {
    NvAssert(mAllocatedFlag);
    NvAssert(mLockCount == 0);
    mAllocatedFlag = false;
    mSize = 0;
    DoFree();
}

std::uint8_t* NvBaseBuffer::Lock() {
    return AddLock();
}

const std::uint8_t* NvBaseBuffer::Lock() const {
    return AddLock();
}

std::uint8_t* NvBaseBuffer::AddLock() const {
    NvAssert(mLockCount < std::numeric_limits<decltype(mLockCount)>::max());
    if (mLockCount == 0)
        mLockedPtr = DoLock();
    ++mLockCount;
    return mLockedPtr;
}

void NvBaseBuffer::Unlock() const {
    NvAssert(mLockCount);
    if (mLockCount == 1)
        DoUnlock();
    --mLockCount;
}

NvBuffer::~NvBuffer() {
    if (mHandle)
        NvBuffer::DoFree();
}

std::unique_ptr<NvBaseBuffer> NvBuffer::Clone() const {
    return NvAllocate([&] { return std::make_unique<NvBuffer>(); });
}

std::uint8_t* NvBuffer::DoLock() const {
    if (!mHandle || !mAddress)
        NvThrow(NvErrorCode::km_MissingData);
    return mAddress;
}

void NvBuffer::DoUnlock() const {
    if (!mHandle)
        NvThrow(NvErrorCode::km_MissingData);
}
