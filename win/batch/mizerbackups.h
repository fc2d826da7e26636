#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "win/batch/mizerorigins.h"
#include "wnatom/wnsystem.h"

struct MizerSettings;

/** The name of a picture's backup: its whole name with ".BAK" appended; further ones, of other pictures that
 *  had the same name, are numbered from 2: "cat.gif.2.BAK". */
std::string MizerBackupName(const std::string& inPath, unsigned inNumber = 1);

/** A picture's backups that are there, by number. Those that cannot be read as files count, too. */
std::vector<std::string> MizerFindBackups(const std::string& inPath);

/** The path of the picture that a file of this name is a backup of; empty when it is none. */
std::string MizerPictureOfBackup(const std::string& inName);

/** Keeps the originals of files that are about to be replaced.
 *
 *  A backup is a file's own when it holds the same bytes, or when the file is known to have been made from
 *  what it holds. All others are left alone, and the file gets one under the next free name: another picture
 *  may have been saved under an old name. */
class MizerBackups {
public:
    explicit MizerBackups(MizerDataFolder inFolder) : mOrigins(std::move(inFolder)) {}

    struct Kept {
        std::string mPath;
        MizerContent mContent;
        bool mIsAside = false; ///< the usual name is taken by a file that is not known to be its own
    };

    /** Copies a file, whole or not at all, to the first name that is free, unless there is a backup of its
     *  own. That one is overwritten if the settings say so, but not by what a run that ended early has left;
     *  so is one at the usual name that nothing is known of.
     *
     *  @param inState       of the file when the work on it began
     *  @return              where the original is kept now; nothing when the file is not as it was, and
     *                       nothing was kept
     *  @throws NvErrorCode  1 it cannot be read, or what stands at the usual name is no regular file; 2; 5
     *                       no right to add a file to the folder; 22 */
    std::optional<Kept> BackupFile(const char* inPath, const WnFileState& inState,
                                   bool inOverwrites = false) const;

    /** The last of a picture's backups that holds the same or is known to hold what the picture was made
     * from; empty when none does.
     *  @throws NvErrorCode  1 when one cannot be read; 2 */
    std::string FindOwn(const std::vector<std::string>& inBackups, const MizerContent& inPicture) const;

    const MizerOrigins& GetOrigins() const { return mOrigins; }

    /** Removes what killed runs left behind where a file, or what it leads to, would be replaced. Once for
     *  each folder. */
    void RemoveLeftoversBeside(const char* inPath);

private:
    enum class Place { km_Free, km_Own, km_Replaceable, km_Taken };

    Place Judge(const std::string& inBackup, unsigned inNumber, const WnFileState& inState,
                const MizerContent& inContent, bool inOverwrites, MizerContent& outHeld) const;

    MizerOrigins mOrigins;
    std::set<std::string> mCleanedFolders;
};
