#include "term/termshell.h"

#include "term/interrupt.h"
#include "win/errorwords.h"
#include "wnatom/wnsystem.h"

TermShell::TermShell(const TermSettings& inSettings, TermMessages& ioMessages, TermResults& ioResults)
    : mMessages(ioMessages), mResults(ioResults), mPassedOver(inSettings, ioMessages) {}

bool TermShell::PumpEvents() {
    return TermIsInterrupted() || mResults.IsPipeClosed();
}

bool TermShell::ShowProgress(double /*inFraction*/) {
    return TermIsInterrupted();
}

void TermShell::ShowMessage(const char* inText, const char* /*inCaption*/, Icon inIcon) {
    if (inIcon == Icon::km_Stop)
        mMessages.Warning(inText);
    else
        mMessages.Note(inText);
}

std::string TermShell::GetDataFolder() {
    return WnGetDataFolder();
}

void TermShell::FileDone(const MizerFileResult& inResult) {
    mResults.Add(inResult);
    switch (inResult.mStatus) {
    case MizerStatus::km_Smaller:
    case MizerStatus::km_Cancelled:
        break;
    case MizerStatus::km_Unchanged:
        if (!inResult.mGateReason.empty())
            mMessages.FileNote(inResult.mPath,
                               "left as it was, the smaller file would have looked different: " +
                                   TermPrintable(inResult.mGateReason));
        break;
    case MizerStatus::km_Skipped:
        mPassedOver.Tell(inResult.mPath, inResult.mSkip);
        break;
    case MizerStatus::km_Failed:
        mMessages.FileError(inResult.mPath, (inResult.mBackupFailed ? "no backup could be made: " : "") +
                                                MizerErrorWords(*inResult.mError));
        break;
    }
}
