#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "win/batch/mizeroutcome.h"
#include "win/texts/pvtexts.h"

/** The files of this session as a table that can be sorted; a window only shows it. Texts are UTF-8. */
class SessionList {
public:
    struct Row {
        std::string mPath;
        MizerStatus mStatus = MizerStatus::km_Unchanged;
        std::uint32_t mOriginalSize = 0; ///< bytes; 0 when it was not measured
        std::uint32_t mNewSize = 0;      ///< bytes
        std::string mOutcome;            ///< in words
        std::string mOriginalPath;       ///< where the file as it was can be read; empty: nowhere

        std::uint32_t GetSaved() const { return mOriginalSize - mNewSize; }
    };

    /** In the order of the table, see GetColumns. */
    enum class Column { km_Name, km_Original, km_New, km_Saved, km_Percentage, km_Outcome };

    /** The heading of a column and how it is shown. */
    struct Definition {
        PvText mHeading;
        bool mIsNumber; ///< aligned right, and sorted with the largest first
        int mWidth;     ///< pixels at 96 per inch, at least
        std::string (*mGetText)(const Row& inRow);
        bool (*mIsLess)(const Row& inFirst, const Row& inSecond);
    };
    static std::span<const Definition> GetColumns();

    /** Adds a row at its place in the current order. A file that is listed already moves its row to what
     *  became of it now, and keeps the sizes it had when the session first met it.
     *  @param inOriginalPath  see Row
     *  @return its index */
    std::size_t Add(const MizerFileResult& inResult, const std::string& inOriginalPath);

    /** A name that leads to no file, with the reason. */
    std::size_t AddFailure(const std::string& inName, const std::string& inReason);

    std::size_t GetCount() const { return mRows.size(); }
    const Row& GetRow(std::size_t inIndex) const { return mRows[inIndex]; }

    /** What the table shows there: sizes with a comma at every thousand, empty where there is nothing to say.
     */
    std::string GetText(std::size_t inIndex, Column inColumn) const;

    /** Sorts by a column, or reverses the order if it is sorted by that one already. Numbers begin with the
     *  largest, texts with A; rows that are equal keep their order. */
    void SortBy(Column inColumn);
    bool IsSorted() const { return mIsSorted; }
    Column GetSortColumn() const { return mColumn; }
    bool IsAscending() const { return mIsAscending; }

    /** "7 files, 5 made smaller, 1 failed: 21,432 bytes saved"; empty without files. */
    std::string GetSummary() const;

private:
    std::size_t Insert(Row inRow);
    bool ComesBefore(const Row& inFirst, const Row& inSecond) const;

    std::vector<Row> mRows;
    bool mIsSorted = false;
    Column mColumn = Column::km_Name;
    bool mIsAscending = true;
};

/** "1,234,567" */
std::string SessionNumber(std::uint64_t inNumber);
