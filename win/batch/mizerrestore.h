#pragma once

#include <cstdint>
#include <string>

class MizerBackups;

enum class MizerRestored {
    km_Restored,
    km_NoBackup,   ///< there is none
    km_OtherImage, ///< the picture has another screen or other frames, so it was not made from this backup
    km_InUse,      ///< another process works on the picture
    km_Changed,    ///< another program changed the picture meanwhile
};

/** What is wanted, and how. */
struct MizerRestoreOptions {
    std::string mBackup;            ///< the one to take; empty: the picture's own, as far as that is known
    std::uint64_t mMemoryLimit = 0; ///< bytes that reading it may need; 0: the usual limit
    bool mIsDryRun = false;         ///< nothing changes, but everything is tried
};

struct MizerRestoration {
    MizerRestored mWhat = MizerRestored::km_NoBackup;
    std::string mBackup; ///< the one taken
    std::string mKept;   ///< where what was in the picture's place is kept, unless it can be made anew; in a
                         ///< dry run where it would be, at the earliest
};

/** Puts a backup back in its picture's place, in one step; the backup stays. The picture may be missing.
 *
 *  What is renamed has been read as a GIF from the first to the last frame. Links and permissions stay as
 *  when a file is made smaller; the file is as old as its backup. Where the picture is not known to have been
 *  made from the backup, nor to hold the same bytes, it may have been edited since: it is kept as a further
 *  backup first.
 *
 *  @throws NvErrorCode   why the backup is no sound GIF or the picture could not be replaced; it is as it was
 */
MizerRestoration MizerRestore(const std::string& inPath, const MizerRestoreOptions& inOptions,
                              MizerBackups& ioBackups);
