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

void TermShell::ShowOthersInHand(std::size_t inCount, std::uint64_t inBytesDone) {
    if (mPanel)
        mPanel->SetOthers(inCount, inBytesDone);
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

void TermShell::FileStarted(const char* inPath) {
    if (mPanel)
        mPanel->StartFile(inPath, mOutcomes.GetShownName(inPath));
}

void TermShell::FileDone(const MizerFileResult& inResult) {
    if (mPanel)
        mPanel->Hide();
    Report(inResult);
    if (!mPanel || inResult.mStatus == MizerStatus::km_Cancelled)
        return;
    mPanel->EndFile(inResult.mPath, inResult.mStatus != MizerStatus::km_Skipped);
    mPanel->PutBack();
}

void TermShell::Report(const MizerFileResult& inResult) {
    const MizerFileResult shown = mOutcomes.GetShown(inResult);
    const std::string words = TermOutcomeWords(shown);
    mOutcomes.FileDone(inResult);
    if (words.empty())
        return;
    if (inResult.mStatus == MizerStatus::km_Failed)
        mMessages.FileError(shown.mPath, words);
    else if (inResult.mReason == MizerReason::km_DoneBefore)
        mPassedOver.ReportInDetail(shown.mPath, words);
    else if (inResult.mStatus == MizerStatus::km_Skipped && inResult.mReason != MizerReason::km_InUse)
        mPassedOver.Report(shown.mPath, inResult.mReason == MizerReason::km_NotNamedGIF
                                            ? words + "; 'parvigif - <NAME >NEW.gif' reads any file"
                                            : words);
    else
        mMessages.FileNote(shown.mPath, words);
}
