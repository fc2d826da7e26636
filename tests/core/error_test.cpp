#include "nvcode2/base/nverrorcode.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "nvcode2/base/nvassert.h"

namespace {

std::string FileNameOf(const NvErrorCode& inError) {
    return reinterpret_cast<const char*>(inError.GetFileName() + 1);
}

int gReports = 0;

TEST(ErrorTest, LongFileNamesAreCutAt255) {
    for (const std::size_t length : {0u, 255u, 256u}) {
        const std::string name(length, 'n');
        const NvErrorCode error(1, name.c_str(), 7);
        const std::size_t kept = std::min<std::size_t>(length, 255);
        EXPECT_EQ(error.GetFileName()[0], kept);
        EXPECT_EQ(FileNameOf(error), name.substr(0, kept));
    }
}

TEST(ErrorTest, TheReportHookIsCalledOncePerRaisedError) {
    NvSetErrorReportHook([](const NvErrorCode&) { ++gReports; });
    const NvErrorCode code(5, "f", 1);
    EXPECT_EQ(gReports, 1);
    const NvErrorCode copy = code;
    const NvErrorCode moved(copy, "other", 9);
    EXPECT_EQ(gReports, 1) << "a copy is the same error";
    EXPECT_EQ(FileNameOf(moved), "f") << "the first raiser stays named";
    NvSetErrorReportHook(nullptr);
}

TEST(ErrorTest, RuntimeErrorsMapToCodes) {
    const struct {
        std::int32_t systemError;
        std::uint32_t code;
    } rows[] = {{ENOENT, 10}, {E2BIG, 21},  {EBADF, 20}, {EAGAIN, 9},  {ENOMEM, 2},
                {EACCES, 5},  {EEXIST, 31}, {EXDEV, 17}, {EINVAL, 21}, {EMFILE, 9},
                {ENOSPC, 22}, {ERANGE, 29}, {EIO, 1},    {0, 1},       {-1, 1}};
    for (const auto& row : rows) {
        try {
            ThrowRuntimeError(row.systemError);
        } catch (const NvErrorCode& error) {
            EXPECT_EQ(error.GetCode(), row.code) << "errno " << row.systemError;
            EXPECT_EQ(error.GetSystemError(), row.systemError);
            EXPECT_EQ(FileNameOf(error), "nvcode2/base/nverrorcode.cpp");
        }
    }
}

TEST(AssertDeathTest, ReportsTheExpressionAfterTheHook) {
    const int present = 0;
    NvAssert(!present);
    EXPECT_DEATH(
        {
            NvSetAssertHook([](const char* inFileName, std::uint32_t inLine) {
                std::fprintf(stderr, "hook saw %s:%u\n", inFileName, inLine);
            });
            NvAssert(present);
        },
        "hook saw .*error_test.cpp:.*\nAssertion failed: \"present\", file .*error_test.cpp, line");
}

} // namespace
