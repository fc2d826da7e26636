#include "term/results.h"

#include <array>
#include <cerrno>
#include <cstdio>

#include "term/messages.h"
#include "win/mizertotals.h"

namespace {

/** "    before     after     saved          file", columns of bytes right-aligned. */
std::string MakeRow(const std::string& inBefore, const std::string& inAfter, const std::string& inSaved,
                    const std::string& inPercentage, const std::string& inWhat) {
    std::array<char, 128> numbers{};
    std::snprintf(numbers.data(), numbers.size(), "%10s %10s %10s %7s  ", inBefore.c_str(), inAfter.c_str(),
                  inSaved.c_str(), inPercentage.c_str());
    return numbers.data() + inWhat + "\n";
}

std::string FormatPercentage(std::uint64_t inPart, std::uint64_t inWhole) {
    const double percentage =
        inWhole == 0 ? 0.0 : static_cast<double>(inPart) * 100.0 / static_cast<double>(inWhole);
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%.1f%%", percentage);
    return text.data();
}

std::string Count(std::uint64_t inCount, const char* inOne, const char* inMany) {
    return std::to_string(inCount) + " " + (inCount == 1 ? inOne : inMany);
}

/** The line below a file's row, indented to the column of names. */
std::string MakeDetail(const MizerFileResult& inResult) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "%43s%s, similarity %.3f, largest difference %u\n", "",
                  Count(inResult.mFrameCount, "frame", "frames").c_str(), inResult.mWorstLook.mSsim,
                  static_cast<unsigned>(inResult.mWorstLook.mMaxError));
    return text.data();
}

} // namespace

void TermResults::Add(const MizerFileResult& inResult) {
    if (inResult.mStatus == MizerStatus::km_Failed)
        ++mFailed;
    if (inResult.mStatus != MizerStatus::km_Smaller && inResult.mStatus != MizerStatus::km_Unchanged)
        return;
    ++mFiles;
    mSmaller += inResult.mStatus == MizerStatus::km_Smaller ? 1 : 0;
    mOriginalBytes += inResult.mOriginalSize;
    mNewBytes += inResult.mNewSize;
    Print(MakeRow(std::to_string(inResult.mOriginalSize), std::to_string(inResult.mNewSize),
                  std::to_string(inResult.GetSaved()),
                  MizerPercentage(inResult.GetSaved(), inResult.mOriginalSize),
                  TermPrintable(inResult.mPath)));
    if (mDetail == TermDetail::km_Verbose && inResult.mStatus == MizerStatus::km_Smaller)
        Print(MakeDetail(inResult));
}

void TermResults::PrintTotal() {
    if (mFiles == 0)
        return;
    std::string what = Count(mFiles, "file", "files") + ", " + std::to_string(mSmaller) + " made smaller";
    if (mFailed != 0)
        what += "; " + std::to_string(mFailed) + " failed";
    const std::uint64_t saved = mOriginalBytes - mNewBytes;
    Print(MakeRow(std::to_string(mOriginalBytes), std::to_string(mNewBytes), std::to_string(saved),
                  FormatPercentage(saved, mOriginalBytes), what));
}

/** Flushed line by line: a long batch is watched through pipes too. */
void TermResults::Print(const std::string& inLine) {
    if (mDetail == TermDetail::km_Quiet || mPipeClosed)
        return;
    if (!mHasHeading) {
        const std::string heading = MakeRow("Before", "After", "Saved", "", "File");
        std::fwrite(heading.data(), 1, heading.size(), stdout);
        mHasHeading = true;
    }
    const bool isWritten = std::fwrite(inLine.data(), 1, inLine.size(), stdout) == inLine.size();
    if (isWritten && std::fflush(stdout) == 0)
        return;
    if (errno == EPIPE)
        mPipeClosed = true;
    else
        mWriteError = errno;
}
