#include "term/termshell.h"

#include "term/system/interrupt.h"

TermShell::TermShell(const TermSettings& inSettings, TermMessages& ioMessages, TermOutcomes& ioOutcomes)
    : mMessages(ioMessages), mOutcomes(ioOutcomes), mPassedOver(inSettings, ioMessages) {}

void TermShell::SetPanel(TermPanel* inPanel, std::function<void()> inOnPause) {
    mPanel = inPanel;
    mOnPause = std::move(inOnPause);
}

bool TermShell::PumpEvents() {
    RefreshPanel();
    return TermIsInterrupted() || mOutcomes.IsPipeClosed();
}

bool TermShell::ShowProgress(double inFraction) {
    if (mPanel)
        mPanel->SetFileFraction(inFraction);
    RefreshPanel();
    return TermIsInterrupted();
}

/** A pause only waits, so it may come in the middle of a file. */
void TermShell::RefreshPanel() {
    if (!mPanel)
        return;
    mPanel->Refresh();
    if (mPanel->IsPauseAsked() && mOnPause)
        mOnPause();
}

void TermShell::SetPanelText(MizerControl inControl, const char* inText) {
    if (mPanel)
        mPanel->SetText(inControl, inText);
}

void TermShell::ShowMessage(const char* inText, const char* inCaption, Icon inIcon) {
    if (mPanel && inIcon == Icon::km_None)
        return mPanel->WaitForKey(inCaption, "any key resumes, Ctrl-C stops"); // there is no OK to click
    if (mPanel)
        mPanel->Hide();
    if (inIcon == Icon::km_Stop)
        mMessages.Warning(inText);
    else
        mMessages.Note(inText);
    if (mPanel)
        mPanel->PutBack();
}

std::string TermShell::GetShownName(const std::string& inPath) const {
    const auto name = mShownNames.find(inPath);
    return name == mShownNames.end() ? inPath : name->second;
}

void TermShell::FileStarted(const char* inPath) {
    if (mPanel)
        mPanel->StartFile(inPath, GetShownName(inPath));
}

void TermShell::FileDone(const MizerFileResult& inResult) {
    MizerFileResult shown = inResult;
    shown.mOutputPath = GetShownName(inResult.mOutputPath);
    shown.mPath = GetShownName(inResult.mPath);
    if (mPanel)
        mPanel->Hide();
    Report(shown);
    if (!mPanel || inResult.mStatus == MizerStatus::km_Cancelled)
        return;
    mPanel->EndFile(inResult.mPath, inResult.mStatus != MizerStatus::km_Skipped);
    mPanel->PutBack();
}

void TermShell::Report(const MizerFileResult& inResult) {
    const std::string words = TermOutcomeWords(inResult);
    mOutcomes.FileDone(inResult);
    if (words.empty())
        return;
    if (inResult.mStatus == MizerStatus::km_Failed)
        mMessages.FileError(inResult.mPath, words);
    else if (inResult.mStatus == MizerStatus::km_Skipped && inResult.mReason != MizerReason::km_InUse)
        mPassedOver.Report(inResult.mPath, inResult.mReason == MizerReason::km_NotNamedGIF
                                               ? words + "; 'parvigif - <NAME >NEW.gif' reads any file"
                                               : words);
    else
        mMessages.FileNote(inResult.mPath, words);
}
