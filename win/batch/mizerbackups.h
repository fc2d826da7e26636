#pragma once

#include <string>

struct MizerSettings;

/** Keeps the originals of files that are about to be replaced. */
class MizerBackups {
public:
    /** Copies a file, whole or not at all, to its name with ".BAK" appended, if the settings ask for backups
     *  and no older one is to stay.
     *  @return              where the original is kept now; empty when none is to be kept
     *  @throws NvErrorCode  1 it cannot be read, or what stands at the backup's name is no regular file; 2; 5
     *                       no right to add a file to the folder; 22 */
    std::string BackupFile(const char* inPath, const MizerSettings& inSettings) const;

    /** Removes what killed runs left behind in a file's folder, once for files of one folder in a row. */
    void RemoveLeftoversBeside(const char* inPath);

private:
    std::string mCleanedFolder; // the last one
};
