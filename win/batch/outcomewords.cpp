#include "win/batch/outcomewords.h"

#include "win/batch/errorwords.h"

namespace {

const char* SkipWords(MizerSkip inReason) {
    switch (inReason) {
    case MizerSkip::km_Backup:
        return "skipped: a backup";
    case MizerSkip::km_Empty:
        return "skipped: empty";
    case MizerSkip::km_InUse:
        return "skipped: another run is working on it";
    case MizerSkip::km_Done:
        return "skipped: an earlier run was through with it";
    default:
        return "skipped: its name does not end in GIF";
    }
}

/** What the error is about, when it is not the file itself. */
std::string FailedPlace(const MizerFileResult& inResult) {
    if (inResult.mBackupFailed)
        return "no backup could be made: ";
    return inResult.mDeliveryFailed ? "not written to the output folder: " : "";
}

} // namespace

std::string MizerOutcomeWords(const MizerFileResult& inResult) {
    switch (inResult.mStatus) {
    case MizerStatus::km_Unchanged:
        return inResult.mGateReason.empty() ? "" : "left as it was: " + inResult.mGateReason;
    case MizerStatus::km_Skipped:
        return SkipWords(inResult.mSkip);
    case MizerStatus::km_Failed:
        return FailedPlace(inResult) + MizerErrorWords(*inResult.mError);
    default:
        return "";
    }
}
