#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "term/results/counts.h"
#include "win/batch/mizershell.h"
#include "wnatom/wnsafefile.h"

/** A web page about a run: totals, a table of the files, and each picture made smaller, before and after. It
 * is one file that needs nothing else.
 *
 *  The page is written file by file and gets its name at the end, so that a long run needs no more memory
 *  than its largest pictures, and a page that exists is complete. */
class TermReport {
public:
    /** Begins the page, so that a run does not end with one that cannot be written.
     *
     *  @param inPath   where the page goes; a file that is there must be an older report
     *  @param inLimit  bytes of pictures that the page may hold; further ones are left out
     *  @throws NvErrorCode  31 when another file or a folder is there, 5, 10, 22, 1 as WnSafeFile */
    TermReport(const std::string& inPath, std::uint64_t inLimit, bool inIsDryRun);
    ~TermReport();

    /** See MizerListener. */
    void BeforeReplace(const char* inPath);
    void ResultMade(const char* inPath, const char* inResultPath);

    /** @param inPath    as in the other two
     *  @param inResult  with the names to show */
    void FileDone(const std::string& inPath, const MizerFileResult& inResult);

    /** Completes the page. Called once, when all files are done.
     *  @throws NvErrorCode  22 and others when it could not be written; there is no new page then */
    void Finish(bool inIsCancelled);

private:
    struct Closer {
        void operator()(std::FILE* inStream) const { std::fclose(inStream); }
    };
    using Bytes = std::vector<unsigned char>;
    struct Pictures {
        std::optional<Bytes> mBefore, mAfter;
    };

    std::optional<Bytes> Read(const char* inPath) const;
    void Write(const std::string& inText);
    void WritePicture(const char* inClass, const Bytes& inBytes);
    void WritePictures(const Pictures& inPictures);

    std::string mPath;
    std::uint64_t mLimit;
    bool mIsNew;
    WnSafeFile mFile;
    std::unique_ptr<std::FILE, Closer> mStream;
    std::string mEnd;        // of the page
    long mTotalsAt = 0;      // where in the page the totals go, in room kept for them
    std::uint64_t mHeld = 0; // bytes of pictures that are in the page
    std::uint64_t mLeftOut = 0;
    std::map<std::string, Pictures> mPictures; // of the files in hand, by path
    TermCounts mCounts;
    int mWriteError = 0;
};
