#include "win/session/sessionlist.h"

#include <algorithm>
#include <array>
#include <utility>

#include "win/batch/mizeroutcome.h"
#include "win/batch/mizertotals.h"

namespace {

std::string OutcomeOf(const MizerFileResult& inResult) {
    std::string words = MizerOutcomeWords(inResult);
    switch (inResult.mStatus) {
    case MizerStatus::km_Smaller:
        return words.empty() ? "Made smaller" : "Made smaller, " + words;
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
    {"Name", false, 132, [](const Row& row) { return NameOf(row.mPath); },
     [](const Row& first, const Row& second) { return NameOf(first.mPath) < NameOf(second.mPath); }},
    {"Original", true, 68, [](const Row& row) { return NumberIfMeasured(row, row.mOriginalSize); },
     [](const Row& first, const Row& second) { return first.mOriginalSize < second.mOriginalSize; }},
    {"New", true, 68, [](const Row& row) { return NumberIfMeasured(row, row.mNewSize); },
     [](const Row& first, const Row& second) { return first.mNewSize < second.mNewSize; }},
    {"Saved", true, 68, [](const Row& row) { return NumberIfMeasured(row, row.GetSaved()); },
     [](const Row& first, const Row& second) { return first.GetSaved() < second.GetSaved(); }},
    {"%", true, 52,
     [](const Row& row) {
         return row.mOriginalSize != 0 ? MizerPercentage(row.GetSaved(), row.mOriginalSize) : "";
     },
     HasSmallerShare},
    {"Outcome", false, 130, [](const Row& row) { return row.mOutcome; },
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
