#pragma once

#include <memory>
#include <string>

/** A fresh folder for throw-away files that only this user can enter. It goes at destruction with the files
 * in it. */
class WnPrivateFolder {
public:
    /** @throws NvErrorCode by the runtime's error number when none can be made below the temporary one */
    WnPrivateFolder();
    ~WnPrivateFolder();
    WnPrivateFolder(const WnPrivateFolder&) = delete;
    WnPrivateFolder& operator=(const WnPrivateFolder&) = delete;

    /** Without a closing separator. */
    const std::string& GetPath() const { return mPath; }

private:
    std::string mPath;
};

/** A path for throw-away measurements: "TEMP.GIF" in a private folder. On Windows "C:\TEMP.GIF" comes first;
 * the folder is for when that cannot be made or something stands there already. The file is removed with its
 * folder at destruction, whether or not it was ever written. */
class WnScratchFile {
public:
    /** @throws NvErrorCode as WnPrivateFolder */
    WnScratchFile();
    ~WnScratchFile();
    WnScratchFile(const WnScratchFile&) = delete;
    WnScratchFile& operator=(const WnScratchFile&) = delete;

    const char* GetPath() const { return mPath.c_str(); }

private:
    std::unique_ptr<WnPrivateFolder> mFolder; // null when the path needs none
    std::string mPath;
};
