// Reading: blocks in any order, what is no GIF, damage anywhere, reading ahead.

#include "nvcode2/file/nvfile.h"
#include "nvcode2/file/nvfilereader.h"
#include "tests/gif/giffiles.h"
#include "tests/image/images.h"
#include "tests/support/lzwreference.h"

namespace {

using testing::ElementsAre;

NvGIFFrameInfo InfoOf(NvGIFFile& inFile, std::uint32_t inIndex) {
    return static_cast<const NvGIFFrameInfo&>(*inFile.ReadFrameInfo(inIndex));
}

struct ScanCase {
    const char* mName;
    std::string mBlocks; // between the header and the end of the file
    std::uint32_t mFrames = 1;
    std::uint32_t mError = 0; // of opening, or of reading the first frame
    int mLoopCount = -1;      // -1: no loop
    std::vector<std::string> mComments = {};
    int mDelay = -1; // of the first frame, -1: no graphic control
};

const std::string km_Frame = km_OnePixelFrame;

const ScanCase km_Scans[] = {
    {"one frame", km_Frame + ";"},
    {"no frame", ";", 0},
    {"no trailer", km_Frame},
    {"bytes behind the trailer", km_Frame + ";" + km_Frame + "junk"},
    {"zeros between blocks", "\0"s + km_Frame + "\0\0\0"s + km_Frame + "\0;"s, 2},
    {"a byte that starts no block", km_Frame + GIFComment({}) + "\1", 1, 28},
    {"loop", GIFApplication({"NETSCAPE2.0", "\1\5\1"}) + km_Frame + ";", 1, 0, 0x105},
    {"the other loop", GIFApplication({"ANIMEXTS1.0", "\1\0\0"s}) + km_Frame + ";", 1, 0, 0},
    {"loop of length 2", GIFApplication({"NETSCAPE2.0", "\1\5"}) + km_Frame + ";"},
    {"loop of length 4", GIFApplication({"NETSCAPE2.0", "\1\5\1\1"}) + km_Frame + ";", 1, 0, 0x105},
    {"loop behind another", GIFApplication({"NETSCAPE2.0", "\2\1\0\0\0"s, "\1\7\0"s}) + km_Frame, 1, 0, 7},
    {"another application", GIFApplication({"NETSCAPE2.1", "\1\7\0"s}) + km_Frame + ";"},
    {"comments", GIFComment({"abc", "de"}) + km_Frame + GIFComment({"x"}), 1, 0, -1, {"abcde", "x"}},
    {"plain text", GIFExtension(1, {"123456789012", "hi"}) + km_Frame + ";"},
    {"unknown extensions", GIFExtension(0x77, {"xy"}) + GIFExtension(0, {}) + km_Frame + ";"},
    {"graphic control", GIFControl(0, 9, 0) + km_Frame + ";", 1, 0, -1, {}, 9},
    {"graphic control with more", GIFExtension(0xF9, {"\0\6\0\0"s, "x"}) + km_Frame, 1, 0, -1, {}, 6},
    {"control, then a comment", GIFControl(0, 9, 0) + GIFComment({"x"}) + km_Frame, 1, 0, -1, {"x"}, 9},
    {"graphic control of others", km_Frame + GIFControl(0, 9, 0) + km_Frame + GIFControl(0, 7, 0), 2},
    {"graphic control of size 3", GIFExtension(0xF9, {"\0\1\0"s}) + km_Frame + ";", 1, 28},
    {"graphic control of size 5", GIFExtension(0xF9, {"\0\1\0\0\0"s}) + km_Frame + ";", 1, 28},
    {"cut inside a frame", km_Frame + km_Frame.substr(0, 12), 1, 18},
    {"cut inside a comment", km_Frame + GIFComment({"xyz"}).substr(0, 5), 1, 18},
};

TEST(GIFReader, FindsItsWayThroughTheBlocks) {
    for (const ScanCase& row : km_Scans) {
        SCOPED_TRACE(row.mName);
        GIFInput file(km_SmallHeader + row.mBlocks);
        const std::uint32_t error = CodeOf([&] {
            file.Open();
            if (file->GetNumberOfFrames() > 0) {
                EXPECT_THAT(BytesOf(file.ReadImage(0)), ElementsAre(1));
            }
        });
        EXPECT_EQ(error, row.mError);
        if (row.mError != 0)
            continue;
        EXPECT_EQ(file->GetNumberOfFrames(), row.mFrames);
        const NvGIFGlobalInfo& info = *file->GetGlobalInfo();
        EXPECT_EQ(info.mHasLoop ? info.mLoopCount : -1, row.mLoopCount);
        EXPECT_EQ(info.mComments.GetTexts(), row.mComments);
        if (row.mFrames > 0) {
            const NvGIFFrameInfo frame = InfoOf(*file, 0);
            EXPECT_EQ(frame.mHasGraphicControl ? frame.mDelay : -1, row.mDelay);
        }
    }
}

struct FrameCase {
    const char* mName;
    unsigned mScreenWidth, mScreenHeight, mScreenPacked;
    unsigned mLeft, mTop, mWidth, mHeight, mPacked;
    std::uint32_t mError;
};

const FrameCase km_FrameCases[] = {
    {"fits", 5, 4, 0x80, 2, 1, 3, 3, 0, 0},
    {"a pixel beyond the right edge", 5, 4, 0x80, 3, 1, 3, 3, 0, 28},
    {"a pixel beyond the bottom edge", 5, 4, 0x80, 2, 2, 3, 3, 0, 28},
    {"beyond 16 bits", 65535, 65535, 0x80, 65535, 0, 65535, 1, 0, 28},
    {"no width", 5, 4, 0x80, 0, 0, 0, 3, 0, 28},
    {"no height", 5, 4, 0x80, 0, 0, 3, 0, 0, 28},
    {"no screen", 0, 0, 0x80, 0, 0, 3, 3, 0, 28},
    {"no table", 5, 4, 0, 0, 0, 3, 3, 0, 28},
    {"only a local table", 5, 4, 0, 0, 0, 3, 3, 0x80, 0},
};

TEST(GIFReader, ChecksFramesBeforeTheyCostMemory) {
    for (const FrameCase& row : km_FrameCases) {
        SCOPED_TRACE(row.mName);
        GIFInput file(GIFHeader(row.mScreenWidth, row.mScreenHeight, row.mScreenPacked) +
                      GIFTable(row.mScreenPacked ? 2 : 0) +
                      GIFDescriptor(row.mLeft, row.mTop, row.mWidth, row.mHeight, row.mPacked) +
                      GIFTable(row.mPacked ? 2 : 0) + ReferenceLZWEncode(2, Indices(9, 1)) + ";");
        file.Open();
        EXPECT_EQ(CodeOf([&] { file->CheckFrame(InfoOf(*file, 0)); }), row.mError);
        EXPECT_EQ(CodeOf([&] { EXPECT_EQ(BytesOf(file.ReadImage(0)), Indices(9, 1)); }), row.mError);
    }
    // The largest possible size is known without the pixels in memory.
    GIFInput largest(GIFHeader(65535, 65535, 0x80) + GIFTable(2) + GIFDescriptor(0, 0, 65535, 65535, 0) +
                     km_OnePixelData);
    largest.Open();
    const NvGIFFrameInfo info = InfoOf(*largest, 0);
    EXPECT_EQ(std::uint64_t{info.mWidth} * info.mHeight, 65535u * 65535ull);
    EXPECT_EQ(CodeOf([&] { largest->CheckFrame(info); }), 0u);
}

// Every beginning of a file is either whole frames or an error, and never more than that.
TEST(GIFReader, SurvivesBeingCutAnywhere) {
    const std::string table = GIFTable(4);
    const std::string data = ReferenceLZWEncode(2, {0, 1, 2, 3, 3, 2, 1, 0, 0, 0, 0, 0});
    const std::vector<std::vector<std::string>> files{
        {GIFHeader(4, 3, 0x81, "87a") + table + GIFDescriptor(0, 0, 4, 3, 0) + data},
        {GIFHeader(4, 4, 0x81) + table + GIFApplication({"NETSCAPE2.0", "\1\0\0"s}) + GIFControl(5, 10, 3) +
             GIFDescriptor(0, 0, 4, 3, 0) + data,
         GIFComment({"hello"}), GIFControl(9, 20, 0), GIFDescriptor(0, 1, 4, 3, 0) + data},
        {GIFHeader(9, 9, 0) + GIFExtension(1, {"123456789012", "hi"}) + GIFDescriptor(5, 5, 3, 4, 0xC1) +
             table + data,
         "\0"s, GIFApplication({"abc", "x"}), GIFDescriptor(5, 5, 4, 3, 0x81) + table + data},
    };
    for (const std::vector<std::string>& blocks : files) {
        std::string bytes;
        for (const std::string& block : blocks) {
            for (std::size_t length = 1; length < block.size(); ++length)
                ASSERT_EQ(CodeOfReadingAll(bytes + block.substr(0, length)), 18u) << bytes.size() + length;
            bytes += block;
            EXPECT_EQ(CodeOfReadingAll(bytes), 0u) << "cut after " << bytes.size();
        }
    }
}

// Jumps are around the places where what was read ahead begins and ends.
TEST(FileReader, ReadsAheadWithoutLosingItsPlace) {
    std::mt19937 random(1);
    std::string bytes(200000, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    const TestFolder folder;
    NvFile file(WriteTestFile(folder / "bytes", bytes).c_str());
    file.Open(NvFile::km_ReadPerm);
    NvFileReader reader(file);
    std::uint32_t position = 0;
    for (int i = 0; i < 4000; ++i) {
        if (RandomBelow(random, 3) == 0) {
            position = RandomBelow(random, 4) * 65536 + RandomBelow(random, 20);
            position -= std::min(position, 10U);
            reader.Seek(position);
        }
        ASSERT_EQ(reader.GetPosition(), position);
        std::string piece(RandomBelow(random, i % 50 ? 20 : 70000), '\0');
        const auto length = static_cast<std::uint32_t>(piece.size());
        if (position + length > bytes.size()) {
            EXPECT_EQ(CodeOf([&] { reader.Skip(length); }), 18u);
            EXPECT_TRUE(reader.IsAtEnd());
            reader.Seek(position = 0);
            continue;
        }
        if (i % 2)
            reader.Skip(length);
        else
            reader.Read(piece.data(), length);
        ASSERT_TRUE(i % 2 || piece == bytes.substr(position, length)) << position;
        position += length;
        EXPECT_EQ(reader.IsAtEnd(), position == bytes.size());
    }
}

} // namespace
