#pragma once

#include <cstddef>
#include <string>
#include <vector>

/** What the progress panel shows. */
struct TermPanelTexts {
    std::string mFileName; ///< whole, safe to show
    std::string mOthers;   ///< files in hand besides: "and 3 more"; or empty
    std::string mFileSize;
    std::string mThisFile;
    std::string mThisFilePercent;
    std::string mThisBatch;
    std::string mThisBatchPercent;
    std::string mToDate;
    std::string mFilesToDate;
    std::string mPosition;       ///< of the file in the batch: "3 of 10"; or empty
    std::string mNotice;         ///< what is happening: the time left, or that the run is paused
    std::string mKeys;           ///< what can be done about it
    double mFileFraction = 0.0;  ///< progress of the file, 0 to 1
    double mBatchFraction = 0.0; ///< progress of the batch, 0 to 1
};

/** What the terminal can show. */
struct TermPanelStyle {
    std::size_t mColumns = 80;
    std::size_t mRows = 24;
    bool mIsColoured = false;
    bool mIsUtf8 = false;
};

/** The panel's lines for a terminal of that size, none wider and never more than it has rows: in a narrow one
 *  the bar has a line of its own, in a low one the most informative lines stay. */
std::vector<std::string> TermLayOutPanel(const TermPanelTexts& inTexts, const TermPanelStyle& inStyle);
