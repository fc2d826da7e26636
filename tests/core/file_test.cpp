// Reading, writing and measuring files.

#include "tests/core/filetest.h"

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

TEST_F(FileTest, LengthsOf2GiBAreToldNotWrapped) {
    NvFile counter;
    counter.Open(6);
    for (const std::uint32_t more : {0x80000000u, 0x7fffffffu, 2u}) { // 2 GiB, just below 4 GiB, past 4 GiB
        counter.Write(nullptr, more);
        EXPECT_EQ(CodeOf([&] { counter.GetLength(); }), 29u);
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

} // namespace
