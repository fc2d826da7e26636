#pragma once

#include <string>

/** A path for throw-away measurements: "TEMP.GIF" in a fresh folder that only this user can enter. On Windows
 *  "C:\TEMP.GIF" comes first; the folder is for when that cannot be made or something stands there already.
 *  The file is removed with its folder at destruction, whether or not it was ever written. */
class WnScratchFile {
public:
    /** @throws NvErrorCode by the runtime's error number when no folder can be made below the temporary one
     */
    WnScratchFile();
    ~WnScratchFile();
    WnScratchFile(const WnScratchFile&) = delete;
    WnScratchFile& operator=(const WnScratchFile&) = delete;

    const char* GetPath() const { return mPath.c_str(); }

private:
    std::string mFolder;
    std::string mPath;
};
