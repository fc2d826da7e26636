#include "win/session/sessionlist.h"

#include <algorithm>
#include <array>
#include <utility>

#include "win/batch/mizeroutcome.h"
#include "win/batch/mizertotals.h"

namespace {

std::string OutcomeOf(const MizerFileResult& inResult) {
    const std::string words = MizerOutcomeWords(inResult);
    switch (inResult.mStatus) {
    case MizerStatus::km_Smaller:
        return words.empty() ? PvSay(PvText::km_MadeSmaller) : PvSay(PvText::km_MadeSmallerBut, {words});
    case MizerStatus::km_Unchanged:
        return words.empty() ? PvSay(PvText::km_Unchanged) : PvSay(PvText::km_UnchangedSince, {words});
    case MizerStatus::km_Failed:
        return PvSay(PvText::km_FailedSince, {words});
    case MizerStatus::km_Cancelled:
        return PvSay(PvText::km_Cancelled);
    case MizerStatus::km_Skipped:
        return PvSay(PvText::km_SkippedSince, {MizerWhyWords(inResult)});
    }
    return words;
}

std::string NameOf(const std::string& inPath) {
    return inPath.substr(inPath.find_last_of("\\/") + 1);
}

using Row = SessionList::Row;

std::string NumberIfMeasured(const Row& inRow, std::uint64_t inNumber) {
    return inRow.mOriginalSize != 0 ? SessionNumber(inNumber) : "";
}

/** Whether a smaller share of the first was saved. Sizes that were not measured count as 0. */
bool HasSmallerShare(const Row& inFirst, const Row& inSecond) {
    const auto share = [](const Row& row, const Row& other) {
        return row.GetSaved() * std::max<std::uint64_t>(other.mOriginalSize, 1);
    };
    return share(inFirst, inSecond) < share(inSecond, inFirst);
}

constexpr auto km_Columns = std::to_array<SessionList::Definition>({
    {PvText::km_ColumnName, false, 132, [](const Row& row) { return NameOf(row.mPath); },
     [](const Row& first, const Row& second) { return NameOf(first.mPath) < NameOf(second.mPath); }},
    {PvText::km_ColumnOriginal, true, 68,
     [](const Row& row) { return NumberIfMeasured(row, row.mOriginalSize); },
     [](const Row& first, const Row& second) { return first.mOriginalSize < second.mOriginalSize; }},
    {PvText::km_ColumnNew, true, 68, [](const Row& row) { return NumberIfMeasured(row, row.mNewSize); },
     [](const Row& first, const Row& second) { return first.mNewSize < second.mNewSize; }},
    {PvText::km_ColumnSaved, true, 68, [](const Row& row) { return NumberIfMeasured(row, row.GetSaved()); },
     [](const Row& first, const Row& second) { return first.GetSaved() < second.GetSaved(); }},
    {PvText::km_ColumnPercentage, true, 52,
     [](const Row& row) {
         return row.mOriginalSize != 0 ? MizerPercentage(row.GetSaved(), row.mOriginalSize) : "";
     },
     HasSmallerShare},
    {PvText::km_ColumnOutcome, false, 130, [](const Row& row) { return row.mOutcome; },
     [](const Row& first, const Row& second) { return first.mOutcome < second.mOutcome; }},
});
static_assert(km_Columns.size() == static_cast<std::size_t>(SessionList::Column::km_Outcome) + 1);

const SessionList::Definition& Find(SessionList::Column inColumn) {
    return km_Columns[static_cast<std::size_t>(inColumn)];
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
    return Insert({inName, MizerStatus::km_Failed, 0, 0, PvSay(PvText::km_FailedSince, {inReason}), ""});
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
    const auto isLess = Find(mColumn).mIsLess;
    return mIsAscending ? isLess(inFirst, inSecond) : isLess(inSecond, inFirst);
}

std::span<const SessionList::Definition> SessionList::GetColumns() {
    return km_Columns;
}

std::string SessionList::GetText(std::size_t inIndex, Column inColumn) const {
    return Find(inColumn).mGetText(mRows[inIndex]);
}

void SessionList::SortBy(Column inColumn) {
    mIsAscending = mIsSorted && mColumn == inColumn ? !mIsAscending : !Find(inColumn).mIsNumber;
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
    const std::string files =
        PvSay(mRows.size() == 1 ? PvText::km_OneFile : PvText::km_Files, {SessionNumber(mRows.size())});
    const std::string bytes = PvSay(PvText::km_BytesSaved, {SessionNumber(saved)});
    if (failed == 0)
        return PvSay(PvText::km_Summary, {files, SessionNumber(smaller), bytes});
    return PvSay(PvText::km_SummaryWithFailures,
                 {files, SessionNumber(smaller), SessionNumber(failed), bytes});
}

std::string SessionNumber(std::uint64_t inNumber) {
    std::string digits = std::to_string(inNumber);
    for (std::size_t at = digits.size(); at > 3;)
        digits.insert(at -= 3, 1, ',');
    return digits;
}
