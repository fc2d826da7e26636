#pragma once

#include <functional>
#include <map>
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

    /** Uses another name for one file in everything that is reported about it. */
    void SetShownName(const std::string& inPath, const std::string& inName) { mShownNames[inPath] = inName; }

    /** @param inPanel    borrowed until the next call, or null
     *  @param inOnPause  what the key for a pause does */
    void SetPanel(TermPanel* inPanel, std::function<void()> inOnPause = {});

    bool PumpEvents() override;
    bool ShowProgress(double inFraction) override;
    void SetPanelText(MizerControl inControl, const char* inText) override;
    void ShowMessage(const char* inText, const char* inCaption, Icon inIcon) override;
    void FileStarted(const char* inPath) override;
    void BeforeReplace(const char* inPath) override { mOutcomes.BeforeReplace(inPath); }
    void ResultMade(const char* inResultPath) override { mOutcomes.ResultMade(inResultPath); }
    void FileDone(const MizerFileResult& inResult) override;

private:
    std::string GetShownName(const std::string& inPath) const;
    void RefreshPanel();
    void Report(const MizerFileResult& inResult);

    TermMessages& mMessages;
    TermOutcomes& mOutcomes;
    TermPassedOver mPassedOver;
    std::map<std::string, std::string> mShownNames;
    TermPanel* mPanel = nullptr;
    std::function<void()> mOnPause;
};
