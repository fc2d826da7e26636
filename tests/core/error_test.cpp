#include <cerrno>

#include "nvcode2/base/nvallocate.h"
#include "tests/support/test.h"

namespace {

std::string FileNameOf(const NvErrorCode& inError) {
    return reinterpret_cast<const char*>(inError.GetFileName() + 1);
}

TEST(ErrorTest, RunningOutOfMemoryNamesTheCallersLine) {
    try {
        NvAllocate([] { throw std::bad_alloc(); });
        ADD_FAILURE();
    } catch (const NvErrorCode& error) {
        EXPECT_EQ(error.GetCode(), 2u);
        EXPECT_EQ(error.GetLine(), __LINE__ - 4);
        EXPECT_NE(FileNameOf(error).find("error_test"), std::string::npos);
    }
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

} // namespace
