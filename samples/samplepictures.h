#pragma once

#include <string>
#include <vector>

/** Pictures of the kinds people have, drawn here and stored as wastefully as most programs store them.
 *
 *  The same bytes on every machine: integers only. */

struct SamplePicture {
    const char* mFileName;
    const char* mAbout;                       ///< what makes this one different
    void (*mDraw)(const std::string& inPath); ///< writes the file
};

const std::vector<SamplePicture>& GetSamplePictures();
