// Reading, writing and measuring files, and what each call asks first.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "nvcode2/file/nvfilelocator.h"
#include "tests/core/filetest.h"
#include "tests/support/codeof.h"

namespace {

TEST_F(FileTest, WriteReplacesTheContentAndUpdateKeepsIt) {
    NvFile file = FileWith("what was there before");
    file.Open(NvFile::km_WritePerm);
    file.Write("abcdef", 6);
    file.Close();
    EXPECT_EQ(Content(), "abcdef");

    file.Open(NvFile::km_ReadPerm | NvFile::km_WritePerm);
    file.Seek(NvFile::km_FromStart, 2);
    file.Write("XY", 2);
    EXPECT_EQ(ReadText(file, 10), "ef");
    file.SetLength(3);
    file.SetLength(5);
    file.Close();
    EXPECT_EQ(Content(), std::string("abX\0\0", 5));
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

TEST_F(FileTest, CountingMeasuresAndTouchesNothing) {
    NvFile file = FileWith("kept");
    file.Open(NvFile::km_WritePerm | NvFile::km_CountPerm);
    for (const std::uint32_t count : {10u, 20u, 5u})
        file.Write(nullptr, count);
    EXPECT_EQ(file.GetPosition(), 35u);
    file.Close();
    EXPECT_EQ(CodeOf([&] { file.Open(5); }), 5u);
    EXPECT_EQ(file.GetLength(), 35u) << "the count outlives closing and an open that failed";
    EXPECT_EQ(Content(), "kept");
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
    NvFile missing((mFolder / "none/file").c_str());
    char byte = 0;
    const struct {
        const char* name;
        std::uint32_t expected;
        std::uint32_t code;
    } rows[] = {
        {"read closed", 15, CodeOf([&] { closed.Read(&byte, 0); })},
        {"unknown permission 5", 5, CodeOf([&] { closed.Open(5); })},
        {"open twice", 11, CodeOf([&] { open.Open(NvFile::km_ReadPerm); })},
        {"delete open", 11, CodeOf([&] { open.Delete(); })},
        {"write a reading file", 12, CodeOf([&] { open.Write(&byte, 1); })},
        {"read a writing file", 12, CodeOf([&] { writing.Read(&byte, 1); })},
        {"read missing", 10, CodeOf([&] { missing.Open(NvFile::km_ReadPerm); })},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.code, row.expected) << row.name;
    EXPECT_EQ(ReadText(open, 3), "abc") << "a refused call leaves an open file usable";
}

TEST_F(FileTest, AFailedCloseStillCloses) {
    NvFile file = FileWith("");
    file.Open(NvFile::km_ReadPerm, true, 1 << 20); // no such descriptor
    EXPECT_EQ(CodeOf([&] { file.Close(); }), 20u);
    EXPECT_FALSE(file.IsOpen());
    file.Open(NvFile::km_ReadPerm);
}

std::string FileNameIn(const NvFileLocator& inLocator) {
    char name[520];
    inLocator.GetFileName(name);
    return name;
}

TEST(FileLocatorTest, SplitsAtTheLastSeparatorOfEitherKind) {
    const struct {
        const char* path;
        const char* name;
        const char* renamed; // with the file name "c.gif"
    } rows[] = {
        {"C:\\a\\b.gif", "b.gif", "C:\\a\\c.gif"},
        {"/home/a/b.gif", "b.gif", "/home/a/c.gif"},
        {"\\a/b.gif", "b.gif", "\\a/c.gif"},
        {"b.gif", "b.gif", "c.gif"},
        {"/a/", "", "/a/c.gif"},
    };
    for (const auto& row : rows) {
        NvFileLocator locator(row.path);
        EXPECT_EQ(FileNameIn(locator), row.name) << row.path;
        locator.SetFileName("c.gif");
        EXPECT_STREQ(locator.GetPath(), row.renamed);
    }
}

} // namespace
