#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>

class MizerShell;

/** The files that earlier runs are through with, by their contents, so that a library can be gone over again
 *  and again without a picture losing a little each time.
 *
 *  A text file in the data folder, a line per file: its hash, its size, and whether colours may have changed.
 *  A line is one write at the end, so runs side by side never mix theirs; one that does not read so is passed
 *  over. What other runs add while this one lasts is not seen. */
class MizerLedger {
public:
    /** @param inShell       borrowed
     *  @param inIsLossless  whether this run changes no colours: what such a run is through with is not done
     *                       for one that may */
    MizerLedger(MizerShell& inShell, bool inIsLossless);

    /** Whether a run is through with a file of these very bytes. A file that cannot be read is not known. */
    bool Knows(const char* inPath);

    /** This run is through with the file. When the ledger cannot be written, the user is told once. */
    void Add(const char* inPath);

private:
    using Content = std::pair<std::uint64_t, std::size_t>; // hash and size

    void Load();
    std::string GetPath() const;

    MizerShell& mShell;
    bool mIsLossless;
    bool mIsLoaded = false;
    bool mHasFailed = false;
    bool mEndsWithinALine = false;
    std::set<Content> mKnown;
};
