// Cropping: the smallest rectangle that shows, and erases, the same.

#include "tests/optimizer/optimizertest.h"
#include "win/optimizer/frames/pvcrop.h"

namespace {

using CropTest = OptimizerTest;

/** Place and rows of a frame: "1,0 01 .2". */
std::string PlaceAndRows(const NvGIFFrame& inFrame) {
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    return std::to_string(info.mLeft) + "," + std::to_string(info.mTop) + " " + Rows(inFrame);
}

/** Crops every frame. */
void CropFrames(TestAnimation& ioAnimation) {
    PvCropper cropper(ioAnimation.mWidth, ioAnimation.mHeight, true);
    for (auto& frame : ioAnimation.mFrames)
        if (auto cropped = cropper.Crop(*frame)) {
            cropped->UpdateTransparency(ioAnimation.GetSharedTableOf(*cropped), 256);
            frame = std::move(cropped);
        }
}

TEST_F(CropTest, LastFrameIsCutToWhatItShowsAndErases) {
    const struct {
        const char* mName;
        std::vector<TestFrame> mFrames;
        const char* mExpected;
    } cases[] = {
        {"the place on the screen counts", {Picture("0"), Picture("... ..1", 4, 2)}, "6,3 1"},
        {"a frame without a border stays", {Picture("0"), Picture("1. .2")}, "0,0 1. .2"},
        {"nothing drawn leaves one pixel", {Picture("0"), Picture(".. ..", 3, 3)}, "3,3 ."},
        {"a clearing frame keeps what it erases",
         {Picture("0.... ..... ....0"), WithDisposal(Picture("..... ..1.. ....."), 2)},
         "0,0 ..... ..1.. ....."},
        {"but not more", {Picture("00", 1, 1), WithDisposal(Picture("..... ..1.. ....."), 2)}, "1,1 .1"},
        {"nor what is erased already",
         {WithDisposal(Picture("00000 00000"), 2), WithDisposal(Picture("..... ..1.."), 2)},
         "2,1 1"},
        {"nor what has been put back",
         {WithDisposal(Picture("00000 00000"), 3), WithDisposal(Picture("..... ..1.."), 2)},
         "2,1 1"},
        {"a clearing frame may draw nothing",
         {Picture("0", 2, 1), WithDisposal(Picture("..... ....."), 2)},
         "2,1 ."},
    };
    for (const auto& [name, frames, expected] : cases) {
        SCOPED_TRACE(name);
        TestGIF gif = Movie(frames);
        gif.mFrames.back().mDelay = 123;
        const auto animation = MakeAnimation(gif);
        CropFrames(*animation);
        const NvGIFFrame& last = *animation->mFrames.back();
        EXPECT_EQ(PlaceAndRows(last), expected);
        EXPECT_EQ(last.GetInfo().mDelay, 123);
        EXPECT_EQ(CompareGIFs(gif, Describe(*animation)).mDifference, "");
    }
}

TEST_F(CropTest, ASingleImageIsCroppedOnlyWhenTheUserAllowsIt) {
    const std::string border(60, '.');
    TestFrame frame = Picture(border + " " + border + " " + std::string(30, '.') + "012210012210" +
                              std::string(18, '.') + " " + border);
    const TestGIF still = Movie({frame});
    const auto widthAfter = [&](const TestGIF& inGIF) {
        const std::string path = Write(inGIF);
        EXPECT_LT(Optimize(path), EncodeGIF(inGIF).size());
        return ReadGIF(path).mFrames[0].mWidth;
    };
    EXPECT_EQ(widthAfter(still), 60u);
    mSettings.mCropsSingleImages = false;
    EXPECT_EQ(widthAfter(still), 60u);
    EXPECT_EQ(widthAfter(Movie({frame, Picture("1")})), 12u) << "animations always are";
    mSettings.mCropsSingleImages = true;
    EXPECT_EQ(widthAfter(still), 12u);
}

} // namespace
