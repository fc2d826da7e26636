#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>

#include "win/batch/mizerdatafolder.h"

/** The files that earlier runs are through with, by their contents, so that a library can be gone over again
 *  and again without a picture losing a little each time.
 *
 *  A text file in the data folder, a line per file: its hash, its size, and whether colours may have changed.
 *  A line is one write at the end, so runs side by side never mix theirs; one that does not read so is passed
 *  over. What other runs add while this one lasts is not seen. */
class MizerLedger {
public:
    explicit MizerLedger(MizerDataFolder inFolder);

    /** Whether a run is through with a file of these very bytes. A file that cannot be read is not known.
     *  @param inIsLossless  whether colours are to stay: what is done in that way is not done for a run that
     *                       may change them, but the reverse holds */
    bool Knows(const char* inPath, bool inIsLossless);

    /** This run is through with the file. The first time that the ledger cannot be written is reported. */
    void Add(const char* inPath, bool inIsLossless);

private:
    using Content = std::pair<std::uint64_t, std::size_t>; // hash and size

    void Load();
    bool IsKnown(const Content& inContent, bool inIsLossless) const;
    std::string GetPath() const;

    MizerDataFolder mFolder;
    bool mIsLoaded = false;
    bool mHasFailed = false;
    bool mEndsWithinALine = false;
    std::set<Content> mLossy;
    std::set<Content> mLossless;
};
