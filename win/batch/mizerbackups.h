#pragma once

#include <string>

class WnPref;

/** Keeps the originals of files that are about to be replaced, as the preferences BACKUP and OBACK say. */
class MizerBackups {
public:
    /** inPrefs is borrowed; the preferences are read at the moment of use. */
    explicit MizerBackups(const WnPref& inPrefs) : mPrefs(inPrefs) {}

    /** Copies a file, whole or not at all, to its backup's name, unless an older backup is to stay.
     *  @return              where the original is kept now; empty when none is to be kept
     *  @throws NvErrorCode  1 it cannot be read, or what stands at the backup's name is no regular file; 2; 5
     *                       no right to add a file to the folder; 22 */
    std::string Write(const char* inPath) const;

    /** Removes what killed runs left behind in a file's folder, once for files of one folder in a row. */
    void RemoveLeftoversBeside(const char* inPath);

private:
    const WnPref& mPrefs;
    std::string mCleanedFolder; // the last one
};
