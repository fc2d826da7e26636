// Files among pipes, devices, permissions, limits and descriptors.

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/core/filetest.h"

namespace {

TEST_F(FileTest, OnlyRegularFilesAreRead) {
    const std::string pipe = mFolder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path :
         {pipe, mFolder.GetPath(), PathWith("") + "/below", std::string("/dev/zero")}) {
        NvFile file(path.c_str());
        EXPECT_EQ(CodeOf([&] { file.Open(NvFile::km_ReadPerm); }), 1u) << path;
    }
    NvFile file(pipe.c_str());
    EXPECT_EQ(CodeOf([&] { file.Open(NvFile::km_WritePerm); }), 1u) << "no reader";
}

TEST_F(FileTest, AFullDiskIsToldAsSuch) {
    // A limit on the file's size stands for the disk that fills up in the middle of a write.
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{1000, before.rlim_max};
    NvFile file = FileWith("");
    file.Open(NvFile::km_WritePerm);
    const std::string bytes(1500, 'x');
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::uint32_t code = CodeOf([&] { file.Write(bytes.data(), 1500); });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(code, 22u);
}

TEST_F(FileTest, CreatedFilesBelongToTheirOwnerAlone) {
    NvFile created((mFolder / "created").c_str());
    created.Create();
    NvFile written((mFolder / "written").c_str());
    written.Open(NvFile::km_WritePerm);
    for (const char* name : {"created", "written"}) {
        struct stat status;
        ASSERT_EQ(stat((mFolder / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777u, 0600u) << name;
    }
}

} // namespace
