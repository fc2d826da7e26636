#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "win/mizershell.h"

/** Results for programs: one JSON object per line. docs/guide.md tells the fields. */

/** What became of all files of a run. Bytes are those of the files that were made smaller or found unchanged.
 */
struct TermCounts {
    std::uint64_t mSmaller = 0;
    std::uint64_t mUnchanged = 0;
    std::uint64_t mSkipped = 0;
    std::uint64_t mFailed = 0;
    std::uint64_t mOriginalBytes = 0;
    std::uint64_t mNewBytes = 0;
    bool mIsCancelled = false;

    std::uint64_t GetSaved() const { return mOriginalBytes - mNewBytes; }
};

std::string TermJsonFile(const MizerFileResult& inResult, const std::string& inWords);
std::string TermJsonSummary(const TermCounts& inCounts);

/** A string in quotes. Bytes that are no UTF-8 become U+FFFD. */
std::string TermJsonString(std::string_view inText);
