#include "nvcode2/nvfile.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <initializer_list>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/codeof.h"
#include "tests/support/testfolder.h"

namespace {

class FileTest : public testing::Test {
protected:
    std::string PathWith(const std::string& inBytes) { return WriteTestFile(mFolder / "file", inBytes); }
    NvFile FileWith(const std::string& inBytes) { return NvFile(PathWith(inBytes).c_str()); }
    std::string Content() { return ReadTestFile(mFolder / "file"); }

    TestFolder mFolder;
};

/** What inFile holds from the position on, at most inCount bytes, read in one go. */
std::string ReadText(NvFile& ioFile, std::uint32_t inCount) {
    std::string text(inCount, '\0');
    text.resize(ioFile.Read(text.data(), inCount));
    return text;
}

TEST_F(FileTest, WriteReplacesTheContentAndUpdateKeepsIt) {
    NvFile file = FileWith("what was there before");
    file.Open(NvFile::km_WritePerm);
    file.Write("abcdef", 6);
    file.Close();
    EXPECT_EQ(Content(), "abcdef");

    file.Open(NvFile::km_ReadPerm | NvFile::km_WritePerm);
    file.Seek(NvFile::km_FromStart, 2);
    file.Write("XY", 2);
    EXPECT_EQ(file.GetPosition(), 4u);
    EXPECT_EQ(ReadText(file, 10), "ef");
    file.Close();
    EXPECT_EQ(Content(), "abXYef");
}

TEST_F(FileTest, ReadingReturnsWhatThereIsThenTheEnd) {
    NvFile file = FileWith(std::string(40, 'x'));
    file.Open(NvFile::km_ReadPerm);
    EXPECT_EQ(ReadText(file, 100), std::string(40, 'x'));
    EXPECT_EQ(file.Read(nullptr, 0), 0u);
    char byte;
    EXPECT_EQ(CodeOf([&] { file.Read(&byte, 1); }), 18u);
}

TEST_F(FileTest, SeeksFromEachOrigin) {
    NvFile file = FileWith("0123456789");
    file.Open(NvFile::km_ReadPerm);
    const struct {
        std::uint16_t origin;
        std::int32_t offset;
        std::uint32_t position;
    } steps[] = {{0, 7, 7}, {1, -3, 4}, {2, -1, 9}, {2, 5, 15}, {0, 0, 0}};
    for (const auto& step : steps) {
        file.Seek(step.origin, step.offset);
        EXPECT_EQ(file.GetPosition(), step.position) << "origin " << step.origin << ", " << step.offset;
    }
    EXPECT_EQ(CodeOf([&] { file.Seek(3, 0); }), 21u);
    EXPECT_EQ(CodeOf([&] { file.Seek(NvFile::km_FromCurrent, -1); }), 21u);
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST_F(FileTest, SetLengthCutsAndExtends) {
    NvFile file = FileWith("abcdef");
    file.Open(NvFile::km_ReadPerm | NvFile::km_WritePerm);
    file.SetLength(3);
    EXPECT_EQ(file.GetLength(), 3u);
    file.SetLength(5);
    file.Flush();
    file.Close();
    EXPECT_EQ(Content(), std::string("abc\0\0", 5));
}

TEST_F(FileTest, CountingMeasuresAndTouchesNothing) {
    NvFile file = FileWith("kept");
    file.Open(NvFile::km_WritePerm | NvFile::km_CountPerm);
    for (const std::uint32_t count : {10u, 20u, 5u})
        file.Write(nullptr, count);
    EXPECT_EQ(file.GetPosition(), 35u);
    file.Flush();
    file.Close();
    EXPECT_EQ(file.GetLength(), 35u) << "the count outlives closing";
    EXPECT_EQ(Content(), "kept");

    NvFile nameless;
    nameless.Open(7);
    nameless.SetLength(100);
    nameless.Write(nullptr, 1);
    EXPECT_EQ(nameless.GetLength(), 101u);
    EXPECT_EQ(CodeOf([&] { nameless.Seek(NvFile::km_FromStart, 0); }), 20u);
    nameless.Open(6);
    EXPECT_EQ(nameless.GetLength(), 0u);
}

TEST_F(FileTest, LengthsOf2GiBAreToldNotWrapped) {
    NvFile counter;
    counter.Open(6);
    counter.SetLength(0x7fffffff);
    EXPECT_EQ(counter.GetLength(), 0x7fffffffu);
    for (const std::uint32_t more : {1u, 0x7fffffffu, 2u}) { // 2 GiB, just below 4 GiB, past 4 GiB
        counter.Write(nullptr, more);
        EXPECT_EQ(CodeOf([&] { counter.GetLength(); }), 29u);
        EXPECT_EQ(CodeOf([&] { counter.GetPosition(); }), 29u);
    }

    NvFile file = FileWith("");
    std::filesystem::resize_file(file.GetPath(), (std::uintmax_t{1} << 32) + 10);
    file.Open(NvFile::km_ReadPerm);
    EXPECT_EQ(CodeOf([&] { file.GetLength(); }), 29u);
    file.Seek(NvFile::km_FromEnd, 0);
    EXPECT_EQ(CodeOf([&] { file.GetPosition(); }), 29u);
    file.Seek(NvFile::km_FromCurrent, -0x7fffffff);
    file.Seek(NvFile::km_FromCurrent, -0x7fffffff);
    EXPECT_EQ(file.GetPosition(), 12u);
}

TEST_F(FileTest, EveryOperationChecksTheStateFirst) {
    NvFile closed = FileWith("abc");
    NvFile open(closed.GetPath());
    open.Open(NvFile::km_ReadPerm);
    NvFile writing((mFolder / "new").c_str());
    writing.Open(NvFile::km_WritePerm);
    NvFile nameless(static_cast<const char*>(nullptr));
    NvFile cleared(closed.GetPath());
    cleared.ClearPath();
    char byte = 0;
    const struct {
        const char* name;
        std::uint32_t expected;
        std::uint32_t code;
    } rows[] = {
        {"read closed", 15, CodeOf([&] { closed.Read(&byte, 0); })},
        {"write closed", 15, CodeOf([&] { closed.Write(&byte, 1); })},
        {"seek closed", 15, CodeOf([&] { closed.Seek(3, 0); })},
        {"position closed", 15, CodeOf([&] { closed.GetPosition(); })},
        {"length closed", 15, CodeOf([&] { closed.GetLength(); })},
        {"set length closed", 15, CodeOf([&] { closed.SetLength(0); })},
        {"flush closed", 15, CodeOf([&] { closed.Flush(); })},
        {"close closed", 15, CodeOf([&] { closed.Close(); })},
        {"unknown permission 0", 5, CodeOf([&] { closed.Open(0); })},
        {"unknown permission 5", 5, CodeOf([&] { closed.Open(5); })},
        {"open twice", 11, CodeOf([&] { open.Open(NvFile::km_ReadPerm); })},
        {"count over an open file", 11, CodeOf([&] { open.Open(6); })},
        {"create open", 11, CodeOf([&] { open.Create(); })},
        {"delete open", 11, CodeOf([&] { open.Delete(); })},
        {"write a reading file", 12, CodeOf([&] { open.Write(&byte, 1); })},
        {"read a writing file", 12, CodeOf([&] { writing.Read(&byte, 1); })},
        {"open nameless", 4, CodeOf([&] { nameless.Open(NvFile::km_ReadPerm); })},
        {"create cleared", 4, CodeOf([&] { cleared.Create(); })},
        {"delete cleared", 4, CodeOf([&] { cleared.Delete(); })},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.code, row.expected) << row.name;
    EXPECT_FALSE(closed.IsOpen());
    EXPECT_EQ(ReadText(open, 3), "abc") << "a refused call leaves an open file usable";
}

TEST_F(FileTest, OpeningHasItsOwnCodes) {
    NvFile missing((mFolder / "none/file").c_str());
    for (const std::uint16_t perm : std::initializer_list<std::uint16_t>{1, 2, 3})
        EXPECT_EQ(CodeOf([&] { missing.Open(perm); }), 10u) << "permission " << perm;
    EXPECT_EQ(CodeOf([&] { missing.Create(); }), 10u);

    const std::string path = PathWith("");
    NvFile below((path + "/file").c_str());
    try {
        below.Open(NvFile::km_ReadPerm);
        FAIL() << "a file has nothing below it";
    } catch (const NvErrorCode& error) {
        EXPECT_EQ(error.GetCode(), 1u);
        EXPECT_EQ(error.GetSystemError(), ENOTDIR);
    }

    if (geteuid() == 0)
        return; // nothing is denied to root
    std::filesystem::permissions(path, std::filesystem::perms::none);
    NvFile denied(path.c_str());
    EXPECT_EQ(CodeOf([&] { denied.Open(NvFile::km_ReadPerm); }), 14u);
    EXPECT_EQ(CodeOf([&] { denied.Create(); }), 5u);
}

TEST_F(FileTest, OnlyRegularFilesAreRead) {
    const std::string pipe = mFolder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {pipe, mFolder.GetPath(), std::string("/dev/zero")}) {
        NvFile file(path.c_str());
        EXPECT_EQ(CodeOf([&] { file.Open(NvFile::km_ReadPerm); }), 1u) << path;
    }
    NvFile file(pipe.c_str());
    EXPECT_EQ(CodeOf([&] { file.Open(NvFile::km_WritePerm); }), 1u) << "no reader";
}

TEST_F(FileTest, AFullDiskIsToldAsSuch) {
    NvFile full("/dev/full");
    full.Open(NvFile::km_WritePerm);
    EXPECT_EQ(CodeOf([&] { full.Write("x", 1); }), 22u);

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
    EXPECT_EQ(file.GetLength(), 1000u);
}

TEST_F(FileTest, CloseOnCloseDecidesWhoClosesTheDescriptor) {
    const std::string path = PathWith("abc");
    for (const bool closes : {true, false}) {
        for (const bool byDestructor : {true, false}) {
            const int descriptor = ::open(path.c_str(), O_RDONLY);
            ASSERT_NE(descriptor, -1);
            {
                NvFile file;
                file.Open(NvFile::km_ReadPerm, closes, descriptor);
                EXPECT_EQ(ReadText(file, 3), "abc");
                if (!byDestructor)
                    file.Close();
            }
            EXPECT_EQ(fcntl(descriptor, F_GETFD) == -1, closes);
            if (!closes)
                ::close(descriptor);
        }
    }
}

TEST_F(FileTest, AClosedFileLetsGoOfItsDescriptor) {
    int reused = -1;
    {
        NvFile file = FileWith("abc");
        file.Open(NvFile::km_ReadPerm);
        file.Close();
        reused = ::open(file.GetPath(), O_RDONLY); // takes the number that has become free
    }
    EXPECT_NE(fcntl(reused, F_GETFD), -1) << "closed twice";
    ::close(reused);
}

TEST_F(FileTest, AFailedCloseStillCloses) {
    NvFile file = FileWith("");
    file.Open(NvFile::km_ReadPerm, true, 1 << 20); // no such descriptor
    EXPECT_EQ(CodeOf([&] { file.Close(); }), 20u);
    EXPECT_FALSE(file.IsOpen());
    file.Open(NvFile::km_ReadPerm);
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
    EXPECT_EQ(created.Delete(), 0);
    EXPECT_FALSE(std::filesystem::exists(mFolder / "created"));
    EXPECT_EQ(created.Delete(), -1) << "deleting what is not there is no error";
}

} // namespace
