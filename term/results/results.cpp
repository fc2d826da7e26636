#include "term/results/results.h"

#include <array>
#include <cerrno>
#include <utility>

#include "term/results/csv.h"
#include "term/results/json.h"
#include "term/system/standardstreams.h"
#include "term/system/terminal.h"
#include "term/text/messages.h"
#include "term/text/numbers.h"
#include "win/batch/mizertotals.h"

namespace {

constexpr std::size_t km_LeastColumns = 64; // what a row needs with a name of twenty letters

/** "    before     after     saved          file", columns of bytes right-aligned; on a narrow terminal only
 *  two of them. */
std::string MakeRow(bool inIsNarrow, const std::array<std::string, 4>& inNumbers, const std::string& inWhat) {
    const auto& [before, after, saved, percentage] = inNumbers;
    std::array<char, 128> text{};
    if (inIsNarrow)
        std::snprintf(text.data(), text.size(), "%10s %6s  ", after.c_str(), percentage.c_str());
    else
        std::snprintf(text.data(), text.size(), "%10s %10s %10s %7s  ", before.c_str(), after.c_str(),
                      saved.c_str(), percentage.c_str());
    return text.data() + inWhat + "\n";
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
std::string MakeDetail(const MizerFileResult& inResult, int inIndent) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "%*s%s, similarity %.3f, largest difference %u\n", inIndent, "",
                  Counted(inResult.mFrameCount, "frame", "frames").c_str(), inResult.mWorstLook.mSsim,
                  static_cast<unsigned>(inResult.mWorstLook.mMaxError));
    return text.data();
}

} // namespace

TermResults::TermResults(const TermSettings& inSettings)
    : mStream(inSettings.IsFilter() ? stderr : stdout),
      mFormat(inSettings.mFormat),
      mDetail(inSettings.GetDetail()),
      mMode(TermModeName(inSettings)),
      mIsNarrow(TermIsTerminal(mStream) && TermGetSize().mColumns < km_LeastColumns) {
    mCounts.mIsDryRun = inSettings.mIsDryRun;
}

void TermResults::FileDone(const MizerFileResult& inResult) {
    mCounts.Add(inResult);
    if (mFormat == TermFormat::km_Table)
        return PrintRows(inResult);
    PrintHead();
    Print(mFormat == TermFormat::km_Json ? TermJsonFile(inResult, mCounts.mIsDryRun) : TermCsvFile(inResult));
}

/** What precedes all files in a format for programs. */
void TermResults::PrintHead() {
    if (!std::exchange(mHasHeading, true))
        Print(mFormat == TermFormat::km_Json ? TermJsonRun(mMode) : TermCsvHeading());
}

void TermResults::PrintRows(const MizerFileResult& inResult) {
    if (inResult.mStatus != MizerStatus::km_Smaller && inResult.mStatus != MizerStatus::km_Unchanged)
        return;
    PrintRow(MakeRow(mIsNarrow,
                     {TermGrouped(inResult.mOriginalSize), TermGrouped(inResult.mNewSize),
                      TermGrouped(inResult.GetSaved()),
                      MizerPercentage(inResult.GetSaved(), inResult.mOriginalSize)},
                     TermPrintable(inResult.mPath)));
    if (mDetail == TermDetail::km_Verbose && inResult.mStatus == MizerStatus::km_Smaller)
        PrintRow(MakeDetail(inResult, mIsNarrow ? 19 : 43));
}

void TermResults::PrintTotal(bool inIsCancelled) {
    mCounts.mIsCancelled = inIsCancelled;
    if (mFormat == TermFormat::km_Table)
        return mCounts.mSmaller + mCounts.mUnchanged != 0 ? PrintTotalRow() : void();
    PrintHead();
    if (mFormat == TermFormat::km_Json)
        Print(TermJsonSummary(mCounts));
}

void TermResults::PrintTotalRow() {
    PrintRow(MakeRow(mIsNarrow,
                     {TermGrouped(mCounts.mOriginalBytes), TermGrouped(mCounts.mNewBytes),
                      TermGrouped(mCounts.GetSaved()), FormatPercentage(mCounts.GetPercentage())},
                     TermCountWords(mCounts)));
}

/** A line of the table, below its heading. */
void TermResults::PrintRow(const std::string& inLine) {
    if (mDetail == TermDetail::km_Quiet)
        return;
    if (!mHasHeading)
        Print(MakeRow(mIsNarrow, {"Before", "After", "Saved", mIsNarrow ? "Saved" : ""}, "File"));
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
