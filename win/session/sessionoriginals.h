#pragma once

#include <map>
#include <memory>
#include <string>

#include "win/batch/mizerbackups.h"
#include "wnatom/wnsystem.h"

class WnPrivateFolder;

/** Keeps what files were before this session made them smaller, so that both can be compared: their own
 *  backups, or copies where there is none: what another picture of the same name has left is not shown. The
 * copies go at the end of the session. */
class SessionOriginals {
public:
    /** @param inFolder  where is noted which backup belongs to what */
    explicit SessionOriginals(MizerDataFolder inFolder = {&WnGetDataFolder, nullptr});
    ~SessionOriginals();

    /** The file still holds its original bytes and is about to be replaced. Best effort: where it cannot be
     *  copied it just cannot be compared. */
    void Keep(const std::string& inPath);

    /** Where the original can be read; empty: nowhere. */
    std::string Find(const std::string& inPath) const;

private:
    MizerBackups mBackups;
    std::unique_ptr<WnPrivateFolder> mFolder; // made for the first copy
    std::map<std::string, std::string> mPlaces;
};
