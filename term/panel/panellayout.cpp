#include "term/panel/panellayout.h"

#include <algorithm>
#include <cmath>

#include "term/text/textwidth.h"

namespace {

constexpr std::size_t km_LabelColumns = 12;
constexpr std::size_t km_SavedColumns = 26;  // "4,294,967,295 bytes saved" and a gap
constexpr std::size_t km_PercentColumns = 8; // "(100.0%)"
constexpr std::size_t km_LeastBarColumns = 12;
constexpr std::size_t km_WideColumns =
    km_LabelColumns + km_LeastBarColumns + 2 + km_SavedColumns + km_PercentColumns;

constexpr const char* km_Bold = "\033[1m";
constexpr const char* km_Dim = "\033[2m";
constexpr const char* km_Green = "\033[32m";
constexpr const char* km_Plain = "\033[0m";

std::string Blanks(std::size_t inCount) {
    return std::string(inCount, ' ');
}

class Layout {
public:
    Layout(const TermPanelTexts& inTexts, const TermPanelStyle& inStyle)
        : mTexts(inTexts),
          mStyle(inStyle),
          mColumns(inStyle.mColumns - std::min<std::size_t>(inStyle.mColumns, 1)) {}

    std::vector<std::string> Wide() const {
        return {
            FileLine(mTexts.mFileSize + Gap(mTexts.mPosition) + mTexts.mPosition),
            BarLine("This file", mTexts.mFileFraction, mTexts.mThisFile, mTexts.mThisFilePercent),
            BarLine("This batch", mTexts.mBatchFraction, mTexts.mThisBatch, mTexts.mThisBatchPercent),
            Labelled("To date") + ToDate(mColumns - km_LabelColumns),
            Apart(mTexts.mNotice, mTexts.mKeys),
        };
    }

    std::vector<std::string> Narrow() const {
        return {
            FileLine(""),
            Apart(mTexts.mFileSize, mTexts.mPosition),
            BarWith(mTexts.mBatchFraction, mTexts.mNotice),
            SavedLine("This file", mTexts.mThisFile, mTexts.mThisFilePercent),
            SavedLine("This batch", mTexts.mThisBatch, mTexts.mThisBatchPercent),
            SavedLine("To date", mTexts.mToDate, ""),
            Cut(mTexts.mFilesToDate, mColumns),
            Coloured(km_Dim, Cut(mTexts.mKeys, mColumns)),
        };
    }

private:
    std::string Coloured(const char* inColour, const std::string& inText) const {
        return mStyle.mIsColoured && !inText.empty() ? inColour + inText + km_Plain : inText;
    }

    std::string Cut(const std::string& inText, std::size_t inColumns) const {
        return TermShortened(inText, inColumns, mStyle.mIsUtf8 ? "\u2026" : "...");
    }

    std::string Labelled(const std::string& inLabel) const {
        return Coloured(km_Dim, Cut(inLabel + Blanks(km_LabelColumns - inLabel.size()), mColumns));
    }

    std::string ToDate(std::size_t inColumns) const {
        const std::string both = mTexts.mToDate + ", " + mTexts.mFilesToDate;
        return Cut(TermTextWidth(both) <= inColumns ? both : mTexts.mToDate, inColumns);
    }

    static std::string Gap(const std::string& inText) { return inText.empty() ? "" : Blanks(4); }

    /** One text at the left end, the other, which stays whole, at the right. */
    std::string Apart(const std::string& inLeft, const std::string& inRight) const {
        if (TermTextWidth(inRight) + 2 > mColumns)
            return Cut(inLeft, mColumns);
        const std::size_t room = mColumns - TermTextWidth(inRight) - 2;
        const std::string left = Cut(inLeft, room);
        return left + Blanks(room + 2 - TermTextWidth(left)) + Coloured(km_Dim, inRight);
    }

    std::string FileLine(const std::string& inRight) const {
        const std::size_t room =
            mColumns - std::min(mColumns, TermTextWidth(inRight) + (inRight.empty() ? 0 : 2));
        const std::string others = mTexts.mOthers.empty() ? "" : " " + mTexts.mOthers;
        const std::string name =
            Cut(mTexts.mFileName, room - std::min(room, TermTextWidth(others))) + Cut(others, room);
        const std::string gap = inRight.empty() ? "" : Blanks(room + 2 - TermTextWidth(name));
        return Coloured(km_Bold, name) + gap + inRight;
    }

    std::string Bar(double inFraction, std::size_t inColumns) const {
        const double cells = std::clamp(inFraction, 0.0, 1.0) * static_cast<double>(inColumns);
        const auto full = static_cast<std::size_t>(std::floor(cells));
        std::string done, rest;
        for (std::size_t i = 0; i < inColumns; ++i)
            (i < full ? done : rest) +=
                mStyle.mIsUtf8 ? (i < full ? "\u2588" : "\u2591") : (i < full ? "#" : "-");
        return Coloured(km_Green, done) + Coloured(km_Dim, rest);
    }

    std::string BarWith(double inFraction, const std::string& inText) const {
        const std::size_t text = inText.empty() ? 0 : TermTextWidth(inText) + 2;
        if (text + 4 > mColumns)
            return Cut(inText, mColumns);
        return Bar(inFraction, mColumns - text) + (inText.empty() ? "" : "  " + inText);
    }

    std::string BarLine(const char* inLabel, double inFraction, const std::string& inSaved,
                        const std::string& inPercent) const {
        const std::size_t bar = mColumns - km_LabelColumns - 2 - km_SavedColumns - km_PercentColumns;
        return Labelled(inLabel) + Bar(inFraction, bar) + "  " + Saved(inSaved, km_SavedColumns, inPercent);
    }

    /** Where there is no room for everything, the numbers are worth more than their label. */
    std::string SavedLine(const char* inLabel, const std::string& inSaved,
                          const std::string& inPercent) const {
        const std::size_t numbers = TermTextWidth(inSaved) + km_PercentColumns + 1;
        if (numbers > mColumns)
            return Cut(inSaved, mColumns);
        const std::string label = km_LabelColumns + numbers > mColumns ? "" : Labelled(inLabel);
        const std::size_t room = mColumns - (label.empty() ? 0 : km_LabelColumns);
        return label + Saved(inSaved, room - km_PercentColumns, inPercent);
    }

    std::string Saved(const std::string& inSaved, std::size_t inColumns, const std::string& inPercent) const {
        return Cut(inSaved, inColumns) + (inPercent.empty() ? "" : " " + inPercent);
    }

    const TermPanelTexts& mTexts;
    const TermPanelStyle& mStyle;
    std::size_t
        mColumns; // the last one stays free: a cursor behind it wraps in some terminals, in others not
};

} // namespace

std::vector<std::string> TermLayOutPanel(const TermPanelTexts& inTexts, const TermPanelStyle& inStyle) {
    const Layout layout(inTexts, inStyle);
    std::vector<std::string> lines = inStyle.mColumns > km_WideColumns ? layout.Wide() : layout.Narrow();
    const std::size_t room = inStyle.mRows - std::min<std::size_t>(inStyle.mRows, 1);
    if (lines.size() > room)
        lines.resize(room);
    return lines;
}
