#pragma once

#include <cstdint>
#include <string>

#include "term/options.h"
#include "win/mizershell.h"

/** The result table on standard output: a line per file, then one for all of them. */
class TermResults {
public:
    explicit TermResults(TermDetail inDetail) : mDetail(inDetail) {}

    /** Prints the line of a file that was measured and tried; others are none of the table's business. */
    void Add(const MizerFileResult& inResult);

    void PrintTotal();

    /** Whether whoever reads the table has gone away. */
    bool IsPipeClosed() const { return mPipeClosed; }

    /** errno of a line that could not be written for another reason, or 0. */
    int GetWriteError() const { return mWriteError; }

private:
    void Print(const std::string& inLine);

    TermDetail mDetail;
    bool mHasHeading = false;
    bool mPipeClosed = false;
    int mWriteError = 0;
    std::uint64_t mFiles = 0;
    std::uint64_t mSmaller = 0;
    std::uint64_t mFailed = 0;
    std::uint64_t mOriginalBytes = 0;
    std::uint64_t mNewBytes = 0;
};
