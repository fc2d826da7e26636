#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <vector>

#include "win/batch/mizerdatafolder.h"

/** What distinguishes the contents of a file from others. */
struct MizerContent {
    std::uint64_t mHash = 0;
    std::uint64_t mSize = 0;
    auto operator<=>(const MizerContent&) const = default; // NOLINT(modernize-use-nullptr): its generated 0
};

/** @throws NvErrorCode  1 when it cannot be read, whatever the reason; 2 */
MizerContent MizerReadContent(const char* inPath);

/** Which pictures this program has made, and which originals are kept of them: both by their contents, so
 *  that a name now used for another picture does not mislead, and folders may move.
 *
 *  A text file in the data folder, a line per picture: its hash and size, those of its original, and how far
 *  the work on it was. A line is one write at the end, so runs side by side never mix theirs. The file keeps
 *  the newest lines, some 10,000; what it does not hold is not known, and callers must allow for that. */
class MizerOrigins {
public:
    explicit MizerOrigins(MizerDataFolder inFolder) : mFolder(std::move(inFolder)) {}

    enum class Work {
        km_Unknown,
        km_Begun, ///< the run that made it may have had more to do, and ended before
        km_Done,
    };

    /** How far the work was by which a picture came to be from an original. */
    Work FindWork(const MizerContent& inPicture, const MizerContent& inOriginal) const;

    /** Whether any picture is known to have been made from it. */
    bool IsOriginal(const MizerContent& inContent) const;

    /** Whether anything can be kept in mind. */
    bool CanAdd() const;

    /** @return false when it cannot be kept in mind */
    bool Add(const MizerContent& inPicture, const MizerContent& inOriginal, Work inWork) const;

private:
    struct Record {
        MizerContent mPicture;
        MizerContent mOriginal;
        Work mWork = Work::km_Unknown;
    };

    std::string GetPath() const;
    std::vector<Record> Read() const;
    static std::string MakeLine(const Record& inRecord);
    void DropOldest() const;

    MizerDataFolder mFolder;
};
