#include "term/results/counts.h"

#include "term/text/messages.h"

void TermCounts::Add(const MizerFileResult& inResult) {
    switch (inResult.mStatus) {
    case MizerStatus::km_Smaller:
        ++mSmaller;
        break;
    case MizerStatus::km_Unchanged:
        ++mUnchanged;
        break;
    case MizerStatus::km_Skipped:
        ++mSkipped;
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
