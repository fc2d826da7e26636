// drawsamples FOLDER: draws the sample pictures.

#include <cstdio>
#include <string>

#include "nvcode2/base/nverrorcode.h"
#include "samples/samplepictures.h"

int main(int inCount, char** inArguments) {
    if (inCount != 2) {
        std::fputs("Usage: drawsamples FOLDER\n", stderr);
        return 2;
    }
    try {
        for (const SamplePicture& picture : GetSamplePictures())
            picture.mDraw(std::string(inArguments[1]) + "/" + picture.mFileName);
    } catch (const NvErrorCode& error) {
        std::fprintf(stderr, "drawsamples: code %u\n", static_cast<unsigned>(error.GetCode()));
        return 1;
    }
    return 0;
}
