#include "term/results/counts.h"

#include "term/text/messages.h"
#include "term/text/numbers.h"

void TermCounts::Add(const MizerFileResult& inResult) {
    switch (inResult.mStatus) {
    case MizerStatus::km_Smaller:
        ++mSmaller;
        break;
    case MizerStatus::km_Unchanged:
        ++mUnchanged;
        mDoneBefore += inResult.mReason == MizerReason::km_DoneBefore ? 1 : 0;
        break;
    case MizerStatus::km_Skipped:
        ++mSkipped;
        mIsPassedOver = mIsPassedOver || inResult.mReason == MizerReason::km_NotNamedGIF ||
                        inResult.mReason == MizerReason::km_Backup ||
                        inResult.mReason == MizerReason::km_Empty;
        return;
    case MizerStatus::km_Failed:
        ++mFailed;
        return;
    case MizerStatus::km_Cancelled:
        return;
    }
    mOriginalBytes += inResult.mOriginalSize;
    mNewBytes += inResult.mNewSize;
}

double TermCounts::GetPercentage() const {
    return mOriginalBytes == 0
               ? 0.0
               : static_cast<double>(GetSaved()) * 100.0 / static_cast<double>(mOriginalBytes);
}

std::string TermCountWords(const TermCounts& inCounts) {
    const std::uint64_t files = inCounts.mSmaller + inCounts.mUnchanged + inCounts.mFailed;
    std::string words = TermGrouped(files) + (files == 1 ? " file: " : " files: ") +
                        TermGrouped(inCounts.mSmaller) +
                        (inCounts.mIsDryRun ? " could be made smaller" : " made smaller");
    if (inCounts.mUnchanged != 0)
        words += ", " + TermGrouped(inCounts.mUnchanged) + " unchanged";
    if (inCounts.mFailed != 0)
        words += ", " + TermGrouped(inCounts.mFailed) + " failed";
    return words;
}

const char* TermStatusName(MizerStatus inStatus) {
    switch (inStatus) {
    case MizerStatus::km_Smaller:
        return "smaller";
    case MizerStatus::km_Unchanged:
        return "unchanged";
    case MizerStatus::km_Skipped:
        return "skipped";
    case MizerStatus::km_Failed:
        return "failed";
    case MizerStatus::km_Cancelled:
        return "cancelled";
    }
    return "";
}

std::string TermOutcomeWords(const MizerFileResult& inResult) {
    return TermPrintable(MizerOutcomeWords(inResult));
}
