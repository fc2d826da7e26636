#include "win/session/sessionlist.h"

#include <algorithm>
#include <compare>
#include <utility>

#include "win/batch/mizertotals.h"
#include "win/batch/outcomewords.h"

namespace {

std::string OutcomeOf(const MizerFileResult& inResult) {
    std::string words = MizerOutcomeWords(inResult);
    switch (inResult.mStatus) {
    case MizerStatus::km_Smaller:
        return "Made smaller";
    case MizerStatus::km_Unchanged:
        return words.empty() ? "Unchanged" : "Unchanged, " + words;
    case MizerStatus::km_Failed:
        return "Failed: " + words;
    case MizerStatus::km_Cancelled:
        return "Cancelled";
    case MizerStatus::km_Skipped:
        return 'S' + words.substr(1); // "skipped: ..."
    }
    return words;
}

std::string NameOf(const std::string& inPath) {
    return inPath.substr(inPath.find_last_of("\\/") + 1);
}

std::string Plural(std::size_t inCount, const char* inNoun) {
    return SessionNumber(inCount) + " " + inNoun + (inCount == 1 ? "" : "s");
}

/** Less than, equal or greater. Sizes that were not measured count as 0. */
std::strong_ordering Compare(const SessionList::Row& inFirst, const SessionList::Row& inSecond,
                             SessionList::Column inColumn) {
    using Column = SessionList::Column;
    const auto share = [](const SessionList::Row& row, const SessionList::Row& other) {
        return row.GetSaved() * std::max<std::uint64_t>(other.mOriginalSize, 1);
    };
    switch (inColumn) {
    case Column::km_Name:
        return NameOf(inFirst.mPath) <=> NameOf(inSecond.mPath);
    case Column::km_Original:
        return inFirst.mOriginalSize <=> inSecond.mOriginalSize;
    case Column::km_New:
        return inFirst.mNewSize <=> inSecond.mNewSize;
    case Column::km_Saved:
        return inFirst.GetSaved() <=> inSecond.GetSaved();
    case Column::km_Percentage:
        return share(inFirst, inSecond) <=> share(inSecond, inFirst);
    case Column::km_Outcome:
        break;
    }
    return inFirst.mOutcome <=> inSecond.mOutcome;
}

bool StartsAscending(SessionList::Column inColumn) {
    return inColumn == SessionList::Column::km_Name || inColumn == SessionList::Column::km_Outcome;
}

} // namespace

std::size_t SessionList::Add(const MizerFileResult& inResult, const std::string& inOriginalPath) {
    Row row{inResult.mPath,    inResult.mStatus,    inResult.mOriginalSize,
            inResult.mNewSize, OutcomeOf(inResult), inOriginalPath};
    const auto known = std::ranges::find(mRows, row.mPath, &Row::mPath);
    if (known != mRows.end()) {
        const bool wasSmaller = known->GetSaved() != 0 && known->mNewSize == row.mOriginalSize;
        if (wasSmaller) {
            row.mOriginalSize = known->mOriginalSize;
            row.mOriginalPath = known->mOriginalPath;
        }
        mRows.erase(known);
    }
    return Insert(std::move(row));
}

std::size_t SessionList::AddFailure(const std::string& inName, const std::string& inReason) {
    std::erase_if(mRows, [&](const Row& row) { return row.mPath == inName; });
    return Insert({inName, MizerStatus::km_Failed, 0, 0, "Failed: " + inReason, ""});
}

std::size_t SessionList::Insert(Row inRow) {
    const auto place =
        std::upper_bound(mRows.begin(), mRows.end(), inRow, [this](const Row& inFirst, const Row& inSecond) {
            return ComesBefore(inFirst, inSecond);
        });
    const auto inserted = mRows.insert(place, std::move(inRow));
    return static_cast<std::size_t>(inserted - mRows.begin());
}

bool SessionList::ComesBefore(const Row& inFirst, const Row& inSecond) const {
    if (!mIsSorted)
        return false;
    const auto order = Compare(inFirst, inSecond, mColumn);
    return order == (mIsAscending ? std::strong_ordering::less : std::strong_ordering::greater);
}

std::string SessionList::GetText(std::size_t inIndex, Column inColumn) const {
    const Row& row = mRows[inIndex];
    const bool isMeasured = row.mOriginalSize != 0;
    switch (inColumn) {
    case Column::km_Name:
        return NameOf(row.mPath);
    case Column::km_Original:
        return isMeasured ? SessionNumber(row.mOriginalSize) : "";
    case Column::km_New:
        return isMeasured ? SessionNumber(row.mNewSize) : "";
    case Column::km_Saved:
        return isMeasured ? SessionNumber(row.GetSaved()) : "";
    case Column::km_Percentage:
        return isMeasured ? MizerPercentage(row.GetSaved(), row.mOriginalSize) : "";
    case Column::km_Outcome:
        break;
    }
    return row.mOutcome;
}

void SessionList::SortBy(Column inColumn) {
    mIsAscending = mIsSorted && mColumn == inColumn ? !mIsAscending : StartsAscending(inColumn);
    mIsSorted = true;
    mColumn = inColumn;
    std::stable_sort(mRows.begin(), mRows.end(), [this](const Row& inFirst, const Row& inSecond) {
        return ComesBefore(inFirst, inSecond);
    });
}

std::string SessionList::GetSummary() const {
    if (mRows.empty())
        return "";
    std::uint64_t saved = 0;
    std::size_t smaller = 0, failed = 0;
    for (const Row& row : mRows) {
        saved += row.GetSaved();
        smaller += row.GetSaved() != 0 ? 1 : 0;
        failed += row.mStatus == MizerStatus::km_Failed ? 1 : 0;
    }
    return Plural(mRows.size(), "file") + ", " + SessionNumber(smaller) + " made smaller" +
           (failed != 0 ? ", " + SessionNumber(failed) + " failed" : "") + ": " + SessionNumber(saved) +
           " bytes saved";
}

std::string SessionNumber(std::uint64_t inNumber) {
    std::string digits = std::to_string(inNumber);
    for (std::size_t at = digits.size(); at > 3;)
        digits.insert(at -= 3, ",");
    return digits;
}
