// Writing: every byte of small files, and what another reader sees of larger ones.

#include "tests/gif/giffiles.h"
#include "tests/support/lzwreference.h"

namespace {

const NvColorTable km_ThreeGreys = MakeTable({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}});
const std::string km_ThreeGreysPadded = GIFTable(3) + "\0\0\0"s;

TEST(GIFWriter, WritesTheExpectedBytes) {
    GIFOutput file;
    NvGIFGlobalInfo& global = *file->GetGlobalInfo();
    global.mVersionFlag = 1;
    global.mHasGlobalTable = 1;
    global.mColorResolution = 3;
    global.mSortFlag = 1;
    global.mColorTable = km_ThreeGreys;
    global.mBackgroundIndex = 2;
    global.mAspect = 49;
    global.mHasLoop = 1;
    global.mComments.Append(std::string(600, 'c'));
    global.mComments.Append("");
    global.mComments.Append(std::string(255, 'd'));

    const NvIndexedImage plain = MakeIndexedRow({1}, MakeTable({km_Black, km_White}));
    NvIndexedImage colourful(2, 2, NvColorTable(5));
    SetBytes(colourful, {4, 0, 1, 2});
    NvGIFFrameInfo info = PlainInfoFor(colourful);
    info.mLeft = 258;
    info.mTop = 3;
    info.mHasLocalTable = 1;
    info.mColorTable = km_ThreeGreys;
    info.mSortFlag = 1;
    info.mInterlaced = 1;
    info.mHasGraphicControl = 1;
    info.mDelay = 0x4321;
    info.mUserInput = 1;
    info.mDisposal = 7;
    info.mHasTransparency = 1;
    info.mTransparentIndex = 4;

    file.Open(300, 5, 2);
    file->WriteFrame(plain, PlainInfoFor(plain));
    EXPECT_EQ(file->DetachFrameInfo()->mMinimumCodeSize, 1) << "as needed, though 2 is written";
    file->WriteFrame(colourful, info);
    EXPECT_EQ(file.Close(), "GIF89a\x2C\x01\x05\x00\xA9\x02\x31"s + km_ThreeGreysPadded +
                                "!\xFF\x0BNETSCAPE2.0\x03\x01\x00\x00\x00"s + "!\xFE\xFF"s +
                                std::string(255, 'c') + '\xFF' + std::string(255, 'c') + '\x5A' +
                                std::string(90, 'c') + '\0' + "!\xFE\xFF"s + std::string(255, 'd') + '\0' +
                                km_OnePixelFrame + "!\xF9\x04\x1F\x21\x43\x04\x00"s +
                                ",\x02\x01\x03\x00\x02\x00\x02\x00\xE1"s + km_ThreeGreysPadded +
                                ReferenceLZWEncode(3, {4, 0, 1, 2}) + ';');
}

// From a plain writer through our reader and our writer to giflib.
TEST(GIFRoundTrip, AnotherReaderSeesWhatOursHasRead) {
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        const TestGIF gif = SoundRandomGIF(seed);
        GIFInput input(EncodeGIF(gif));
        input.Open();
        GIFOutput output;
        output->SetGlobalInfo(input->GetGlobalInfo());
        output.Open(input->GetScreenWidth(), input->GetScreenHeight(), input->GetNumberOfFrames());
        for (std::uint32_t i = 0; i < input->GetNumberOfFrames(); ++i) {
            const NvIndexedImage image = input.ReadImage(i);
            output->WriteFrame(image, *input->DetachFrameInfo());
        }
        const std::string bytes = output.Close();
        EXPECT_EQ(output->GetWrittenLength(), bytes.size());

        const TestGIF read = ReadGIF(output.GetPath());
        EXPECT_EQ(CompareGIFs(gif, read).mDifference, "");
        EXPECT_EQ(read.mTable, gif.mTable);
        EXPECT_EQ(read.mBackground, gif.mBackground);
        EXPECT_TRUE(read.mFrames == gif.mFrames);
    }
}

} // namespace
