#pragma once

#include <functional>
#include <string>

#include "term/inputs/names.h"
#include "term/outcomes.h"
#include "term/panel/panel.h"
#include "term/text/messages.h"
#include "win/batch/mizershell.h"

/** The batch seen from a terminal or a pipe: plain lines as files are done, and a panel below them where
 *  there is one. */
class TermShell : public MizerShell {
public:
    /** All are borrowed for the shell's life. */
    TermShell(const TermSettings& inSettings, TermMessages& ioMessages, TermOutcomes& ioOutcomes);

    /** @param inPanel    borrowed until the next call, or null
     *  @param inOnPause  what the key for a pause does */
    void SetPanel(TermPanel* inPanel, std::function<void()> inOnPause = {});

    bool PumpEvents() override;
    bool ShowProgress(double inFraction) override;
    void ShowOthersInHand(std::size_t inCount, std::uint64_t inBytesDone) override;
    void SetPanelText(MizerControl inControl, const char* inText) override;
    void ShowMessage(const char* inText, const char* inCaption, Icon inIcon) override;
    void FileStarted(const char* inPath) override;
    void BeforeReplace(const char* inPath) override { mOutcomes.BeforeReplace(inPath); }
    void ResultMade(const char* inPath, const char* inResultPath) override {
        mOutcomes.ResultMade(inPath, inResultPath);
    }
    void FileDone(const MizerFileResult& inResult) override;

private:
    void RefreshPanel();
    void Report(const MizerFileResult& inResult);

    TermMessages& mMessages;
    TermOutcomes& mOutcomes;
    TermPassedOver mPassedOver;
    TermPanel* mPanel = nullptr;
    std::function<void()> mOnPause;
};
