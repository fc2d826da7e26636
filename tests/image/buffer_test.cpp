#include "nvcode2/nvbuffer.h"

#include <gtest/gtest.h>

#include "tests/support/codeof.h"

namespace {

TEST(Buffer, HoldsMemoryBetweenAllocateAndFree) {
    NvBuffer buffer;
    EXPECT_FALSE(buffer.IsAllocated());
    buffer.Allocate(100);
    EXPECT_EQ(buffer.GetSize(), 100u);
    const std::uint8_t* const first = buffer.Lock();
    buffer.Unlock();
    EXPECT_EQ(buffer.Lock(), first) << "the block does not move";
    buffer.Unlock();
    buffer.Free();
    EXPECT_FALSE(buffer.IsAllocated());
    EXPECT_EQ(buffer.GetSize(), 0u);
}

TEST(Buffer, NothingIsStillAnAddress) {
    NvBuffer buffer;
    buffer.Allocate(0);
    const NvBufferLocker locker(buffer);
    ASSERT_NE(locker.Get(), nullptr);
    *locker.Get() = 1;
}

TEST(Buffer, LocksNest) {
    NvBuffer buffer;
    buffer.Allocate(1);
    std::uint8_t* const outer = buffer.Lock();
    {
        const NvBufferLocker inner(buffer);
        EXPECT_EQ(inner.Get(), outer);
    }
    EXPECT_TRUE(buffer.IsLocked());
    buffer.Unlock();
    EXPECT_FALSE(buffer.IsLocked());
    EXPECT_DEATH(buffer.Unlock(), "mLockCount");
}

TEST(Buffer, MisuseIsOurMistake) {
    NvBuffer buffer;
    EXPECT_EQ(CodeOf([&] { buffer.Lock(); }), 27u);
    EXPECT_FALSE(buffer.IsLocked()) << "a failed lock does not count";
    EXPECT_DEATH(buffer.Free(), "mAllocatedFlag");
    buffer.Allocate(8);
    EXPECT_DEATH(buffer.Allocate(8), "!mAllocatedFlag");
    const NvBufferLocker locker(buffer);
    EXPECT_DEATH(buffer.Free(), "mLockCount == 0");
}

TEST(Buffer, ACloneIsEmpty) {
    NvBuffer buffer;
    buffer.Allocate(10);
    EXPECT_FALSE(buffer.Clone()->IsAllocated());
}

} // namespace
