#include "term/listener.h"

#include "term/messages.h"
#include "win/errorwords.h"

namespace {

const char* SkipWords(MizerSkip inReason) {
    switch (inReason) {
    case MizerSkip::km_Backup:
        return "skipped: a backup";
    case MizerSkip::km_Empty:
        return "skipped: empty";
    default:
        return "skipped: its name does not end in GIF";
    }
}

} // namespace

std::string TermOutcomeWords(const MizerFileResult& inResult) {
    switch (inResult.mStatus) {
    case MizerStatus::km_Unchanged:
        return inResult.mGateReason.empty() ? "" : "left as it was: " + TermPrintable(inResult.mGateReason);
    case MizerStatus::km_Skipped:
        return SkipWords(inResult.mSkip);
    case MizerStatus::km_Failed:
        return (inResult.mBackupFailed ? "no backup could be made: " : "") +
               MizerErrorWords(*inResult.mError);
    default:
        return "";
    }
}
