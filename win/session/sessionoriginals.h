#pragma once

#include <map>
#include <memory>
#include <string>

class WnPrivateFolder;

/** Keeps what files were before this session made them smaller, so that both can be compared: their backups,
 *  or copies of its own where there is none. The copies go at the end of the session. */
class SessionOriginals {
public:
    SessionOriginals();
    ~SessionOriginals();

    /** The file still holds its original bytes and is about to be replaced. Best effort: where it cannot be
     *  copied it just cannot be compared. */
    void Keep(const std::string& inPath);

    /** Where the original can be read; empty: nowhere. */
    std::string Find(const std::string& inPath) const;

private:
    std::unique_ptr<WnPrivateFolder> mFolder; // made for the first copy
    std::map<std::string, std::string> mPlaces;
};
