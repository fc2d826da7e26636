#pragma once

#include <cstdint>
#include <string>

#include "win/batch/mizeroutcome.h"

/** What became of all files of a run. The bytes are those of files made smaller or found unchanged. */
struct TermCounts {
    std::uint64_t mSmaller = 0;
    std::uint64_t mUnchanged = 0;
    std::uint64_t mSkipped = 0;
    std::uint64_t mFailed = 0;
    std::uint64_t mDoneBefore = 0; ///< of those that are unchanged
    std::uint64_t mOriginalBytes = 0;
    std::uint64_t mNewBytes = 0;
    bool mIsCancelled = false;
    bool mIsDryRun = false;     ///< nothing was replaced
    bool mIsPassedOver = false; ///< files were skipped that no run would work on

    void Add(const MizerFileResult& inResult);
    std::uint64_t GetSaved() const { return mOriginalBytes - mNewBytes; }

    /** The part of all bytes that was saved, in percent; 0 without any. */
    double GetPercentage() const;
};

/** "16 files: 10 made smaller, 3 unchanged, 3 failed"; of these and no others. */
std::string TermCountWords(const TermCounts& inCounts);

/** One word: "smaller", "unchanged", "skipped", "failed", "cancelled". */
const char* TermStatusName(MizerStatus inStatus);

/** Why a file was not made smaller, see MizerOutcomeWords; safe to show. */
std::string TermOutcomeWords(const MizerFileResult& inResult);
