#pragma once

#include <string>

/** A new file beside an existing one that takes its place in one step.
 *
 *  Others write it through GetTemporaryPath(); Commit() makes it the target. At every moment, also when the
 *  process is killed or the disk fills, the target's name leads to the whole old file or the whole new one.
 *  Symbolic links are followed, so a link stays a link. The temporary name ends in neither GIF nor BAK. */
class WnSafeFile {
public:
    /** Creates the empty temporary file, readable by the owner alone.
     *
     *  @param inTargetPath  the file to become; need not exist, but its folder must
     *  @param inModelPath   the file whose permissions, owner (where allowed) and extended attributes the new
     *                       one takes; null: those of the target, or of any new file when there is none
     *  @throws NvErrorCode  5 no right to add a file to the folder; 10 the folder is missing or the target is
     *                       a link to nothing; 22 disk full; 1 other failures */
    explicit WnSafeFile(const char* inTargetPath, const char* inModelPath = nullptr);

    /** Removes the temporary file unless it was committed. */
    ~WnSafeFile();
    WnSafeFile(const WnSafeFile&) = delete;
    WnSafeFile& operator=(const WnSafeFile&) = delete;

    const char* GetTemporaryPath() const { return mTemporaryPath.c_str(); }

    /** Flushes the new file to the disk and renames it over the target. Whoever wrote it has closed it.
     *  On an error the target is as it was. */
    void Commit();

    /** The same, but never over an existing target.
     *  @return false, with nothing changed, when there is one */
    bool CommitUnlessPresent();

private:
    void Finish();

    std::string mTargetPath; // symbolic links resolved
    std::string mModelPath;
    std::string mTemporaryPath;
    int mDescriptor = -1; // of the temporary file; its lock tells that the file is in use
    bool mCommitted = false;
};

/** Raises code 5 unless the file may be written and its folder takes new files, so that a replacement would
 *  go through. A file or folder without any write permission counts as read-only for the superuser too. */
void WnCheckReplaceable(const char* inPath);

/** Removes what killed runs of the same user left in a folder: files named like our temporaries that no
 *  living process holds. Best effort, never raises. */
void WnRemoveLeftovers(const char* inFolder);
