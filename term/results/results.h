#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "term/options/options.h"
#include "term/results/counts.h"
#include "win/batch/mizershell.h"

/** The results: a line per file, then one for all of them; on standard output unless a picture goes there. */
class TermResults : public MizerListener {
public:
    explicit TermResults(const TermSettings& inSettings);

    /** The table has lines for files that were measured and tried; JSON has them all. */
    void FileDone(const MizerFileResult& inResult) override;

    void PrintTotal(bool inIsCancelled);

    /** How many files nothing was tried with. */
    std::uint64_t CountDoneBefore() const { return mCounts.mDoneBefore; }

    /** Whether files were named, and there was nothing to do with any of them. */
    bool IsNothingDone() const {
        return mCounts.mIsPassedOver && mCounts.mSkipped != 0 &&
               mCounts.mSmaller + mCounts.mUnchanged + mCounts.mFailed == 0;
    }

    /** Whether the reader of the table has gone away. */
    bool IsPipeClosed() const { return mPipeClosed; }

    /** errno of a line that could not be written for another reason, or 0. */
    int GetWriteError() const { return mWriteError; }

private:
    void PrintHead();
    void PrintRows(const MizerFileResult& inResult);
    void PrintTotalRow();
    void PrintRow(const std::string& inLine);
    void Print(const std::string& inLine);

    std::FILE* mStream;
    TermFormat mFormat;
    TermDetail mDetail;
    const char* mMode;
    bool mIsNarrow;
    bool mHasHeading = false;
    bool mPipeClosed = false;
    int mWriteError = 0;
    TermCounts mCounts;
};
