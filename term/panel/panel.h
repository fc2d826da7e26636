#pragma once

#include <string>

#include "term/panel/panellayout.h"
#include "term/panel/progress.h"
#include "win/batch/mizershell.h"

/** The progress panel: a few lines below what the run has printed so far, redrawn in place and removed at the
 *  end. A run that is over in a moment never shows it. Files and bytes come from the batch, progress from
 *  TermProgress. TermCanDraw() holds. */
class TermPanel {
public:
    explicit TermPanel(const TermInputs& inInputs);
    ~TermPanel();
    TermPanel(const TermPanel&) = delete;
    TermPanel& operator=(const TermPanel&) = delete;

    void StartFile(const std::string& inPath, const std::string& inShownName);
    void EndFile(const std::string& inPath, bool inWasStarted) { mProgress.EndFile(inPath, inWasStarted); }
    void SetText(MizerControl inControl, const char* inText);
    /** See MizerShell::ShowOthersInHand. */
    void SetOthers(std::size_t inCount, std::uint64_t inBytesDone);
    void SetFileFraction(double inFraction) { mProgress.SetFileFraction(inFraction); }

    /** Draws the panel unless it was drawn a moment ago. */
    void Refresh();

    /** Takes the panel away, so that a line can be printed where it stood, and puts it back. */
    void Hide();
    void PutBack();

    /** Whether the user has pressed the key for a pause; checks only once in a while. */
    bool IsPauseAsked();

    /** Shows a notice until a key is pressed or the run has to end. */
    void WaitForKey(const std::string& inNotice, const std::string& inText);

private:
    using Clock = TermProgress::Clock;

    void Draw();

    TermProgress mProgress;
    TermPanelTexts mTexts;
    bool mIsShown = false;
    Clock::time_point mLastDrawn;
    Clock::time_point mKeysLastRead;
};
