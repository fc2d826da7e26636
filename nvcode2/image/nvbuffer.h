#pragma once

#include <cstdint>
#include <memory>

/** A block of memory that is used only between Lock and Unlock.
 *
 *  Allocate comes first, then locks, which may nest; the address holds until the outermost is released.
 *  Breaking that order is an assertion. Clone does not copy what a buffer holds: it makes an empty one of the
 *  same class. */
class NvBaseBuffer {
public:
    NvBaseBuffer() = default;
    NvBaseBuffer(const NvBaseBuffer&) = delete;
    NvBaseBuffer& operator=(const NvBaseBuffer&) = delete;
    virtual ~NvBaseBuffer();

    /** A new, unallocated buffer of the same class. A class that lacks it fails here. */
    virtual std::unique_ptr<NvBaseBuffer> Clone() const;

    /** Gets inSize bytes of unspecified contents; 0 is allowed. Precondition: not allocated.
     *  Raises 2 when memory is out; the buffer is then still unallocated. */
    void Allocate(std::uint32_t inSize);
    /** Preconditions: allocated, not locked. */
    void Free();

    /** The first byte, valid until the matching Unlock. Locks nest, up to 65535 deep.
     *  Raises 27 when the buffer holds no memory. */
    std::uint8_t* Lock();
    const std::uint8_t* Lock() const;
    /** Precondition: locked. */
    void Unlock() const;

    bool IsAllocated() const { return mAllocatedFlag; }
    bool IsLocked() const { return mLockCount > 0; }
    /** Bytes allocated, 0 when none. */
    std::uint32_t GetSize() const { return mSize; }

protected:
    virtual std::uint8_t* DoLock() const = 0;
    virtual void DoUnlock() const = 0;
    /** Allocates at least one byte or raises 2. */
    virtual void DoAllocate(std::uint32_t inSize) = 0;
    virtual void DoFree() = 0;

private:
    std::uint8_t* AddLock() const;

    // A lock changes nothing that the buffer holds, so readers may lock a constant one.
    mutable std::uint8_t* mLockedPtr = nullptr; // valid while mLockCount > 0
    mutable std::uint16_t mLockCount = 0;
    std::uint32_t mSize = 0; // bytes
    bool mAllocatedFlag = false;
};

/** The ordinary buffer: one block from the platform, at a stable address for its whole life. */
class NvBuffer : public NvBaseBuffer {
public:
    NvBuffer() = default;
    ~NvBuffer() override;

    std::unique_ptr<NvBaseBuffer> Clone() const override;

protected:
    std::uint8_t* DoLock() const override;
    void DoUnlock() const override;
    void DoAllocate(std::uint32_t inSize) override;
    void DoFree() override;

private:
    void* mHandle = nullptr;          // the platform's name for the block
    std::uint8_t* mAddress = nullptr; // where it is, for as long as it lives
};

/** Locks a buffer for the life of a scope. */
class NvBufferLocker {
public:
    /** Borrows the buffer, which must outlive the locker. */
    explicit NvBufferLocker(NvBaseBuffer& ioBuffer) : mBuffer(ioBuffer), mAddress(ioBuffer.Lock()) {}
    ~NvBufferLocker() { mBuffer.Unlock(); }
    NvBufferLocker(const NvBufferLocker&) = delete;
    NvBufferLocker& operator=(const NvBufferLocker&) = delete;

    std::uint8_t* Get() const { return mAddress; }

private:
    NvBaseBuffer& mBuffer;
    std::uint8_t* mAddress;
};
