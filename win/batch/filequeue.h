#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "nvcode2/base/nvlist.h"
#include "wnatom/wnsystem.h"

/** The files of a batch, in the order they will be processed. Holds each file once. */
class FileQueue {
public:
    /** @param inOnAppend  called with each path that is appended, or empty */
    explicit FileQueue(std::function<void(const std::string&)> inOnAppend = {})
        : mOnAppend(std::move(inOnAppend)) {}
    ~FileQueue();
    FileQueue(const FileQueue&) = delete;
    FileQueue& operator=(const FileQueue&) = delete;

    /** Appends a copy of the path unless this batch holds the file already: the same file under any name, or,
     *  when one of the two does not exist, a name equal but for the case of A to Z.
     *  @return              whether it was appended
     *  @throws NvErrorCode  2 */
    bool AddFile(const char* inPath);

    /** Appends the regular files that a path stands for, in bytewise name order, without entering subfolders:
     *  all of a folder when the path ends in a separator, else those of its folder part that match its last
     *  part, where `*` and `?` are wildcards and A to Z match in either case.
     *  @return              how many of them are named like a GIF file, queued now or before
     *  @throws NvErrorCode  when the folder cannot be read */
    std::size_t AddFolder(const char* inPath);

    enum class Named { km_Queued, km_AlreadyQueued, km_NoGIFs };

    /** Appends what a name given by the user stands for: an existing file, whatever its name holds; the files
     *  of an existing folder; else the files that match it as a pattern.
     *  @return              km_NoGIFs: a folder or a pattern without any file named like a GIF
     *  @throws NvErrorCode  10 no such file; 12 neither file nor folder; 14 and others: no way to look */
    Named AddName(const char* inName);

    /** Takes over all that another queue holds and knows. */
    void TakeOver(FileQueue& ioOther);

    bool IsEmpty() const { return mPaths.GetFirst() == nullptr; }

    /** Removes the first path and hands it to the caller. The queue is not empty. */
    std::unique_ptr<char[]> TakeFirst();

    /** Empties the queue and forgets what went through it: the batch is over. */
    void Clear();

private:
    bool HoldsFile(const std::string& inFoldedPath, const std::optional<WnFileIdentity>& inIdentity) const;

    std::function<void(const std::string&)> mOnAppend;
    NvList mPaths; // NUL-terminated strings that the queue owns
    // Of every path of this batch, also those that have been taken.
    std::set<WnFileIdentity> mIdentities;
    std::unordered_multimap<std::string, bool> mFoldedPaths; // value: whether the file existed
};

/** Whether a name ends in "GIF", so that the batch works on the file, or in "BAK", so that it is taken for a
 *  backup; in either case of letters. No dot is asked for. */
bool MizerIsNamedGIF(const char* inPath);
bool MizerIsNamedBackup(const char* inPath);
