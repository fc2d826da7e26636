#pragma once

#include <memory>
#include <string>

/** A fresh folder for throw-away files that only this user can enter. It is removed at destruction, with the
 *  files in it. Folders left by killed processes are removed when the next process makes its first. */
class WnPrivateFolder {
public:
    /** @throws NvErrorCode by the runtime's error number when none can be made below the temporary one */
    WnPrivateFolder();
    ~WnPrivateFolder();
    WnPrivateFolder(const WnPrivateFolder&) = delete;
    WnPrivateFolder& operator=(const WnPrivateFolder&) = delete;

    /** The path for a file of this name in it. */
    std::string MakePath(const std::string& inName) const;

private:
    struct Hold;

    std::string mPath;           // without a closing separator
    std::unique_ptr<Hold> mHold; // shows other processes that the folder is in use
};

/** A path for throw-away measurements: "TEMP.GIF" in a private folder. On Windows "C:\TEMP.GIF" comes first;
 *  the folder is for when that cannot be made or something stands there already. The file is removed with its
 *  folder at destruction, whether or not it was ever written; the fixed one on Windows also goes when the
 *  process ends, and is to be written over, not replaced. */
class WnScratchFile {
public:
    /** @throws NvErrorCode as WnPrivateFolder */
    WnScratchFile();
    ~WnScratchFile();
    WnScratchFile(const WnScratchFile&) = delete;
    WnScratchFile& operator=(const WnScratchFile&) = delete;

    const char* GetPath() const { return mPath.c_str(); }

private:
    struct Fixed;

    std::unique_ptr<Fixed> mFixed; // null when the path lies in a private folder
    std::unique_ptr<WnPrivateFolder> mFolder;
    std::string mPath;
};
