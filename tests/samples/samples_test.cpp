// The sample pictures that are committed are those that the program draws.

#include <set>

#include <gtest/gtest.h>

#include "samples/samplepictures.h"
#include "tests/support/testfolder.h"

namespace {

TEST(Samples, AreWhatTheProgramDraws) {
    const TestFolder folder;
    std::set<std::string> drawn;
    for (const SamplePicture& picture : GetSamplePictures()) {
        const std::string path = folder / picture.mFileName;
        picture.mDraw(path);
        EXPECT_EQ(ReadTestFile(path), ReadTestFile(std::string(SAMPLES_FOLDER) + "/" + picture.mFileName))
            << picture.mFileName << ": draw them again with build/linux/samples/drawsamples samples";
        drawn.insert(picture.mFileName);
    }
    for (const auto& entry : std::filesystem::directory_iterator(SAMPLES_FOLDER)) {
        if (entry.path().extension() == ".gif") {
            EXPECT_TRUE(drawn.contains(entry.path().filename().string())) << "nothing draws " << entry.path();
        }
    }
}

} // namespace
