#include "term/results/results.h"

#include <array>
#include <cerrno>

#include "term/results/json.h"
#include "term/text/messages.h"
#include "win/batch/mizertotals.h"

namespace {

/** "    before     after     saved          file", columns of bytes right-aligned. */
std::string MakeRow(const std::string& inBefore, const std::string& inAfter, const std::string& inSaved,
                    const std::string& inPercentage, const std::string& inWhat) {
    std::array<char, 128> numbers{};
    std::snprintf(numbers.data(), numbers.size(), "%10s %10s %10s %7s  ", inBefore.c_str(), inAfter.c_str(),
                  inSaved.c_str(), inPercentage.c_str());
    return numbers.data() + inWhat + "\n";
}

std::string FormatPercentage(double inPercentage) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%.1f%%", inPercentage);
    return text.data();
}

std::string Counted(std::uint64_t inCount, const char* inOne, const char* inMany) {
    return std::to_string(inCount) + " " + (inCount == 1 ? inOne : inMany);
}

/** The line below a file's row, indented to the column of names. */
std::string MakeDetail(const MizerFileResult& inResult) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "%43s%s, similarity %.3f, largest difference %u\n", "",
                  Counted(inResult.mFrameCount, "frame", "frames").c_str(), inResult.mWorstLook.mSsim,
                  static_cast<unsigned>(inResult.mWorstLook.mMaxError));
    return text.data();
}

} // namespace

TermResults::TermResults(const TermSettings& inSettings)
    : mStream(inSettings.IsFilter() ? stderr : stdout),
      mIsJson(inSettings.mIsJson),
      mDetail(inSettings.GetDetail()),
      mIsDryRun(inSettings.mIsDryRun) {}

void TermResults::FileDone(const MizerFileResult& inResult) {
    mCounts.Add(inResult);
    if (mIsJson)
        Print(TermJsonFile(inResult));
    else
        PrintRows(inResult);
}

void TermResults::PrintRows(const MizerFileResult& inResult) {
    if (inResult.mStatus != MizerStatus::km_Smaller && inResult.mStatus != MizerStatus::km_Unchanged)
        return;
    PrintRow(MakeRow(std::to_string(inResult.mOriginalSize), std::to_string(inResult.mNewSize),
                     std::to_string(inResult.GetSaved()),
                     MizerPercentage(inResult.GetSaved(), inResult.mOriginalSize),
                     TermPrintable(inResult.mPath)));
    if (mDetail == TermDetail::km_Verbose && inResult.mStatus == MizerStatus::km_Smaller)
        PrintRow(MakeDetail(inResult));
}

void TermResults::PrintTotal(bool inIsCancelled) {
    mCounts.mIsCancelled = inIsCancelled;
    if (mIsJson)
        Print(TermJsonSummary(mCounts));
    else if (mCounts.mSmaller + mCounts.mUnchanged != 0)
        PrintTotalRow();
}

void TermResults::PrintTotalRow() {
    std::string what = Counted(mCounts.mSmaller + mCounts.mUnchanged, "file", "files") + ", " +
                       std::to_string(mCounts.mSmaller) +
                       (mIsDryRun ? " could be made smaller" : " made smaller");
    if (mCounts.mFailed != 0)
        what += "; " + std::to_string(mCounts.mFailed) + " failed";
    PrintRow(MakeRow(std::to_string(mCounts.mOriginalBytes), std::to_string(mCounts.mNewBytes),
                     std::to_string(mCounts.GetSaved()), FormatPercentage(mCounts.GetPercentage()), what));
}

/** A line of the table, below its heading. */
void TermResults::PrintRow(const std::string& inLine) {
    if (mDetail == TermDetail::km_Quiet)
        return;
    if (!mHasHeading)
        Print(MakeRow("Before", "After", "Saved", "", "File"));
    mHasHeading = true;
    Print(inLine);
}

/** Flushed line by line: a long batch is watched through pipes too. */
void TermResults::Print(const std::string& inLine) {
    if (mPipeClosed)
        return;
    const bool isWritten = std::fwrite(inLine.data(), 1, inLine.size(), mStream) == inLine.size();
    if ((isWritten && std::fflush(mStream) == 0) || mStream == stderr)
        return; // beside a picture the table is a remark, like all others there
    if (errno == EPIPE)
        mPipeClosed = true;
    else
        mWriteError = errno;
}
