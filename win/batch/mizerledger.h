#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "win/batch/mizerdatafolder.h"

/** The files that earlier runs are through with, by their contents, so that a library can be gone over again
 *  and again without a picture losing a little each time.
 *
 *  A text file in the data folder, a line per file: its hash, its size, and the kind of work, a word for what
 *  might be done to the picture. A line is one write at the end, so runs side by side never mix theirs; one
 *  that does not read so is passed over. The file keeps the newest lines, some 100,000. What other runs add
 *  while this one lasts is not seen. */
class MizerLedger {
public:
    explicit MizerLedger(MizerDataFolder inFolder);

    /** Whether a run of that kind is through with a file of these very bytes. A file that cannot be read is
     *  not known. What is done with all that may be lost is also done for a run that may lose nothing, but
     * not the reverse. */
    bool Knows(const char* inPath, const std::string& inKind);

    /** This run is through with the file.
     *  @param inComplains  whether it is reported, once, that the ledger cannot be written */
    void Add(const char* inPath, const std::string& inKind, bool inComplains = true);

    static constexpr const char* km_Lossy = "lossy";
    static constexpr const char* km_Lossless = "lossless";

private:
    using Content = std::pair<std::uint64_t, std::size_t>; // hash and size
    using Entry = std::tuple<std::uint64_t, std::size_t, std::string>;

    void Load();
    void DropOldest() const;
    bool IsKnown(const Content& inContent, const std::string& inKind) const;
    std::string GetPath() const;

    MizerDataFolder mFolder;
    bool mIsLoaded = false;
    bool mHasFailed = false;
    bool mEndsWithinALine = false;
    std::set<Entry> mEntries;
};
