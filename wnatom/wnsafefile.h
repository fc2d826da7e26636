#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "wnatom/wnsystem.h"

/** A new file beside an existing one that takes its place in one step.
 *
 *  Its owner fills it, then one of the commits makes it the target. At every moment, also when the process is
 *  killed or the disk fills, the target's name leads to the whole old file or the whole new one. Symbolic
 *  links are followed, so a link stays a link. The temporary name ends in neither GIF nor BAK.
 *
 *  Everything is written through the descriptor that the file was created with: in a folder that others can
 * write to, a name may lead elsewhere a moment later. */
class WnSafeFile {
public:
    /** Creates the empty temporary file, readable by the owner alone.
     *
     *  @param inTargetPath  the file to become; need not exist, but its folder must
     *  @param inModelPath   the file whose permissions, owner (where allowed) and extended attributes the new
     *                       one takes; null: those of the target, or of any new file when there is none
     *  @throws NvErrorCode  5 no right to add a file to the folder, or one that could not be removed again;
     *                       10 the folder is missing or the target is a link to nothing; 22 disk full; 1
     *                       other failures */
    explicit WnSafeFile(const char* inTargetPath, const char* inModelPath = nullptr);

    /** Removes the temporary file unless it was committed. */
    ~WnSafeFile();
    WnSafeFile(const WnSafeFile&) = delete;
    WnSafeFile& operator=(const WnSafeFile&) = delete;

    /** For reading it back. */
    const char* GetTemporaryPath() const { return mTemporaryPath.c_str(); }

    /** Appends bytes.
     *  @throws NvErrorCode  22 and others of NvFile::Write */
    void Write(const void* inBytes, std::size_t inCount);

    /** Appends all of another file.
     *  @throws NvErrorCode  1 when that one cannot be read, whatever the reason; those of Write */
    void CopyFrom(const char* inPath);

    /** A stream that writes to the file; its owner closes it before the file is finished.
     *  @return null, with errno set, on failure */
    std::FILE* OpenStream();

    /** Gives the new file the modification time of another. Call it before Finish. */
    void KeepTimesOf(const char* inPath);

    /** Gives the file its permissions, owner, attributes and time, and flushes it to the disk. Nothing may be
     *  written after it. Every commit does this first if it has not been done.
     *  @throws NvErrorCode  by the runtime's error number */
    void Finish();

    /** Takes the place of the target, whatever that is. On an error the target is as it was.
     *  @throws NvErrorCode  by the runtime's error number */
    void Commit();

    /** The same, but never over an existing target.
     *  @return false, with nothing changed, when there is one */
    bool CommitUnlessPresent();

    /** The same, but only over the very file that was seen, as it was seen. Where names can be exchanged in
     *  one step, what comes out is looked at, too: a file that was saved in the last instant goes back.
     *
     *  @param inSeen  the state that the target had before the new file's source was read
     *  @return        the state of the new file in its place; nothing when the target is another by now,
     *                 which is then left as it is */
    std::optional<WnFileState> CommitOver(const WnFileState& inSeen);

private:
    bool IsAsSeen(const WnFileState& inSeen) const;

    std::string mGivenPath;
    std::string mTargetPath; // symbolic links resolved
    std::string mModelPath;
    std::string mTemporaryPath;
    std::optional<std::int64_t> mModified; // the time it is to have, as in WnFileState
    int mDescriptor = -1;                  // of the temporary file; its lock shows that the file is in use
    bool mIsFinished = false;
    bool mCommitted = false;
};

/** Raises code 5 unless the file may be written and its folder takes new files and gives them up again, so
 *  that a replacement would go through. A file or folder without any write permission counts as read-only for
 *  the superuser too. */
void WnCheckReplaceable(const char* inPath);

/** Removes what killed runs left in a folder: files named like our temporaries that no living process holds.
 *  Best effort, never raises. */
void WnRemoveLeftovers(const char* inFolder);

/** The folder of the file that a path leads to, links resolved: where what replaces it is written. Empty when
 *  it leads to nothing. */
std::string WnGetTargetFolder(const char* inPath);
