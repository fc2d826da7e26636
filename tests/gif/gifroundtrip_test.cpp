#include <string>

#include <gtest/gtest.h>

#include "tests/gif/giffiles.h"

namespace {

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
        EXPECT_EQ(read.mWidth, gif.mWidth);
        EXPECT_EQ(read.mHeight, gif.mHeight);
        EXPECT_EQ(read.mTable, gif.mTable);
        EXPECT_EQ(read.mBackground, gif.mBackground);
        EXPECT_EQ(read.mAspect, gif.mAspect);
        EXPECT_EQ(read.mLoop, gif.mLoop);
        EXPECT_EQ(read.mComments, gif.mComments);
        EXPECT_TRUE(read.mFrames == gif.mFrames);
    }
}

} // namespace
