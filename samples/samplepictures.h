#pragma once

#include <string>
#include <vector>

/** Pictures of the kinds that people have, drawn and stored as wastefully as most programs do.
 *
 *  The same bytes on every machine: integers only. */

struct SamplePicture {
    const char* mFileName;
    const char* mAbout;                       ///< what makes this one different
    void (*mDraw)(const std::string& inPath); ///< writes the file
};

const std::vector<SamplePicture>& GetSamplePictures();
