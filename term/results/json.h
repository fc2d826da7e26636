#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "term/options/options.h"
#include "term/results/counts.h"
#include "win/batch/mizeroutcome.h"

/** Results for programs: one JSON object per line. docs/guide.md lists the fields. */

/** The first object: which fields the others have, and what is done with the files. */
std::string TermJsonRun(const char* inMode);

/** What is done with the files, in a word. */
const char* TermModeName(const TermSettings& inSettings);

std::string TermJsonFile(const MizerFileResult& inResult, bool inIsDryRun);
std::string TermJsonSummary(const TermCounts& inCounts);

/** What became of a picture that was to be restored. */
struct TermRestored {
    const std::string& mPath;
    const std::string& mBackup; ///< what it is restored from; or empty
    const std::string& mKept;   ///< where what was there is kept; or empty
    std::string mMessage;       ///< why it was not restored; or empty
    std::uint32_t mErrorCode;   ///< or 0
    bool mIsDryRun;
};
std::string TermJsonRestored(const TermRestored& inRestored);

/** A string in quotes. Bytes that are no UTF-8 become U+FFFD. */
std::string TermJsonString(std::string_view inText);
