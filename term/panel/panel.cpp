#include "term/panel/panel.h"

#include <algorithm>

#include "term/system/interrupt.h"
#include "term/system/terminal.h"
#include "term/text/messages.h"
#include "term/text/numbers.h"

namespace {

constexpr std::chrono::milliseconds km_FirstShown(150);
constexpr std::chrono::milliseconds km_BetweenDrawings(80);
constexpr const char* km_Keys = "p pauses, Ctrl-C stops";

// A terminal that knows these shows no half-drawn frame; others ignore them.
constexpr const char* km_BeginUpdate = "\033[?2026h";
constexpr const char* km_EndUpdate = "\033[?2026l";
constexpr const char* km_EraseLine = "\033[K";
constexpr const char* km_EraseBelow = "\033[J";

/** A share of the bytes, which stands beside a bar of the progress: in brackets, so that neither is taken for
 * the other. */
std::string Share(const std::string& inPercentage) {
    return inPercentage.empty() || inPercentage == "0.0%" ? "" : "(" + inPercentage + ")";
}

} // namespace

TermPanel::TermPanel(const TermInputs& inInputs) : mProgress(inInputs) {}

TermPanel::~TermPanel() {
    TermLetGoOfTerminal();
}

void TermPanel::StartFile(const std::string& inPath, const std::string& inShownName) {
    mProgress.StartFile(inPath);
    mTexts.mFileName = TermPrintable(inShownName);
    mTexts.mFileSize.clear();
}

void TermPanel::SetOthers(std::size_t inCount, std::uint64_t inBytesDone) {
    mTexts.mOthers = inCount == 0 ? "" : "and " + std::to_string(inCount) + " more";
    mProgress.SetBytesOfOthers(inBytesDone);
}

void TermPanel::SetText(MizerControl inControl, const char* inText) {
    switch (inControl) {
    case MizerControl::km_FileSize:
        mTexts.mFileSize = TermGroupedText(inText);
        break;
    case MizerControl::km_FilesToDate:
        mTexts.mFilesToDate = TermGroupedText(inText);
        break;
    case MizerControl::km_ThisFile:
        mTexts.mThisFile = TermGroupedText(inText);
        break;
    case MizerControl::km_ThisBatch:
        mTexts.mThisBatch = TermGroupedText(inText);
        break;
    case MizerControl::km_ToDate:
        mTexts.mToDate = TermGroupedText(inText);
        break;
    case MizerControl::km_ThisFilePercent:
        mTexts.mThisFilePercent = Share(inText);
        break;
    case MizerControl::km_ThisBatchPercent:
        mTexts.mThisBatchPercent = Share(inText);
        break;
    case MizerControl::km_FileName: // cut for a small window; here there is room for all of it
    case MizerControl::km_Pause:
    case MizerControl::km_Cancel:
        break;
    }
}

void TermPanel::Refresh() {
    if (!mIsShown && mProgress.GetElapsed() < km_FirstShown)
        return;
    if (mIsShown && Clock::now() - mLastDrawn < km_BetweenDrawings)
        return;
    mTexts.mNotice = mProgress.GetTimeLeft();
    mTexts.mKeys = km_Keys;
    Draw();
}

/** From the cursor down, and back to where it began, so that erasing from the cursor on erases the panel,
 * also after the terminal has laid out its lines anew for another width. */
void TermPanel::Draw() {
    if (!TermHoldTerminal()) {
        mIsShown = false;
        return;
    }
    const TermSize size = TermGetSize();
    mTexts.mPosition = mProgress.GetPosition();
    mTexts.mFileFraction = mProgress.GetFileFraction();
    mTexts.mBatchFraction = mProgress.GetBatchFraction();
    const std::vector<std::string> lines =
        TermLayOutPanel(mTexts, {size.mColumns, size.mRows, TermWantsColours(), TermShowsUtf8()});
    std::string text = std::string(km_BeginUpdate) + "\r";
    for (std::size_t i = 0; i < lines.size(); ++i)
        text += (i == 0 ? "" : "\r\n") + lines[i] + km_EraseLine;
    text += km_EraseBelow;
    if (lines.size() > 1)
        text += "\033[" + std::to_string(lines.size() - 1) + "A";
    TermDraw(text + "\r" + km_EndUpdate);
    mIsShown = true;
    mLastDrawn = Clock::now();
}

void TermPanel::Hide() {
    if (mIsShown && TermHoldTerminal())
        TermDraw(std::string("\r") + km_EraseBelow);
}

void TermPanel::PutBack() {
    if (mIsShown)
        Draw();
}

bool TermPanel::IsPauseAsked() {
    bool isAsked = false;
    if (Clock::now() - mKeysLastRead < km_BetweenDrawings)
        return false;
    mKeysLastRead = Clock::now();
    while (mIsShown && TermHoldTerminal()) {
        const int key = TermReadKey(0);
        if (key <= 0)
            break;
        isAsked = isAsked || key == 'p' || key == 'P';
    }
    return isAsked;
}

void TermPanel::WaitForKey(const std::string& inNotice, const std::string& inText) {
    const Clock::time_point begun = Clock::now();
    mTexts.mNotice = inNotice;
    mTexts.mKeys = inText;
    int key = 0;
    while (key == 0 && !TermIsInterrupted()) {
        Draw(); // again and again, since the terminal may change its size meanwhile
        key = mIsShown ? TermReadKey(500) : -1;
    }
    mProgress.LeaveOut(Clock::now() - begun);
    Refresh();
}
