#include "term/termshell.h"

#include <utility>

#include "term/interrupt.h"
#include "wnatom/wnsystem.h"

TermShell::TermShell(const TermSettings& inSettings, TermMessages& ioMessages, TermResults& ioResults,
                     std::vector<TermListener*> inOthers)
    : mMessages(ioMessages),
      mResults(ioResults),
      mListeners(std::move(inOthers)),
      mPassedOver(inSettings, ioMessages) {
    mListeners.insert(mListeners.begin(), &ioResults);
}

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

void TermShell::BeforeReplace(const char* inPath) {
    for (TermListener* listener : mListeners)
        listener->BeforeReplace(inPath);
}

void TermShell::FileDone(const MizerFileResult& inResult) {
    const auto name = mShownNames.find(inResult.mPath);
    if (name == mShownNames.end())
        return Tell(inResult);
    MizerFileResult shown = inResult;
    shown.mPath = name->second;
    Tell(shown);
}

void TermShell::Tell(const MizerFileResult& inResult) {
    const std::string words = TermOutcomeWords(inResult);
    for (TermListener* listener : mListeners)
        listener->FileDone(inResult, words);
    if (words.empty())
        return;
    if (inResult.mStatus == MizerStatus::km_Failed)
        mMessages.FileError(inResult.mPath, words);
    else if (inResult.mStatus == MizerStatus::km_Skipped)
        mPassedOver.Tell(inResult.mPath, words);
    else
        mMessages.FileNote(inResult.mPath, words);
}
