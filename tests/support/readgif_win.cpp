#include "nvcode2/gif/nvgiffile.h"
#include "tests/support/testanimation.h"
#include "tests/support/testgif.h"

TestGIF ReadGIF(const std::string& inPath) {
    NvGIFFile file;
    file.Open(NvFileLocator(inPath.c_str()), NvFile::km_ReadPerm);
    TestGIF gif = Describe(*file.GetGlobalInfo(), file.GetScreenWidth(), file.GetScreenHeight());
    for (std::uint32_t i = 0; i < file.GetNumberOfFrames(); ++i) {
        NvIndexedImage image;
        file.ReadFrame(i, image);
        gif.mFrames.push_back(Describe(*file.DetachFrameInfo(), image));
    }
    return gif;
}
