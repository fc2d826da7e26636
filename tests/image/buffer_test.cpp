#include "nvcode2/nvbuffer.h"

#include <gtest/gtest.h>

#include "tests/support/codeof.h"

namespace {

TEST(Buffer, HoldsMemoryThatDoesNotMoveBetweenAllocateAndFree) {
    NvBuffer buffer;
    EXPECT_FALSE(buffer.IsAllocated());
    buffer.Allocate(100);
    EXPECT_EQ(buffer.GetSize(), 100u);
    EXPECT_FALSE(buffer.Clone()->IsAllocated());
    std::uint8_t* const outer = buffer.Lock();
    {
        const NvBufferLocker inner(buffer);
        EXPECT_EQ(inner.Get(), outer);
    }
    EXPECT_TRUE(buffer.IsLocked());
    buffer.Unlock();
    EXPECT_FALSE(buffer.IsLocked());
    buffer.Free();
    EXPECT_FALSE(buffer.IsAllocated());
    EXPECT_EQ(buffer.GetSize(), 0u);

    buffer.Allocate(0);
    const NvBufferLocker nothing(buffer);
    ASSERT_NE(nothing.Get(), nullptr);
    *nothing.Get() = 1;
}

TEST(Buffer, MisuseIsOurMistake) {
    NvBuffer buffer;
    EXPECT_EQ(CodeOf([&] { buffer.Lock(); }), 27u);
    EXPECT_FALSE(buffer.IsLocked()) << "a failed lock does not count";
    EXPECT_DEATH(buffer.Free(), "mAllocatedFlag");
    buffer.Allocate(8);
    EXPECT_DEATH(buffer.Unlock(), "mLockCount");
    EXPECT_DEATH(buffer.Allocate(8), "!mAllocatedFlag");
    const NvBufferLocker locker(buffer);
    EXPECT_DEATH(buffer.Free(), "mLockCount == 0");
}

} // namespace
