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
    using Step = std::tuple<std::uint16_t, std::int32_t, std::uint32_t>;
    for (const auto& [origin, offset, position] :
         {Step{0, 7, 7}, {1, -3, 4}, {2, -1, 9}, {2, 5, 15}, {0, 0, 0}}) {
        file.Seek(origin, offset);
        EXPECT_EQ(file.GetPosition(), position) << "origin " << origin << ", " << offset;
    }
    EXPECT_EQ(CodeOf([&] { file.Seek(3, 0); }), 21u);
    EXPECT_EQ(CodeOf([&] { file.Seek(NvFile::km_FromCurrent, -1); }), 21u);
    EXPECT_EQ(file.GetPosition(), 0u);
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
