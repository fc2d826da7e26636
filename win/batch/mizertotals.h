#pragma once

#include <cstdint>
#include <string>

class MizerShell;
class WnPref;

/** The numbers of the file in hand, of this batch and of all runs to date, and their texts in the panel.
 *
 *  Bytes throughout, unsigned 32-bit, wrapping silently. The totals to date are read from the preferences at
 *  construction; destruction adds what this run did to what they hold by then. Numbers are kept with or
 *  without a panel. */
class MizerTotals {
public:
    /** Both are borrowed for the object's life. Writes the start-up texts. */
    MizerTotals(WnPref& inPrefs, MizerShell& inShell);
    ~MizerTotals();
    MizerTotals(const MizerTotals&) = delete;
    MizerTotals& operator=(const MizerTotals&) = delete;

    /** A new file is in hand: nothing saved yet, counted as processed, its name shown. */
    void StartFile(const char* inPath);

    /** Its size before the work on it. */
    void SetOriginalSize(std::uint32_t inSize);

    /** It was made smaller: shows and adds its saving to the batch and to the totals to date. */
    void AddSaving(std::uint32_t inNewSize);

private:
    void ShowThisFile(std::uint32_t inNewSize);
    void ShowThisBatch();
    void ShowToDate();
    void ShowFilesProcessed();

    WnPref& mPrefs;
    MizerShell& mShell;
    std::uint32_t mOriginalSize = 0;
    std::uint32_t mBatchOriginal = 0; // of the files that were made smaller
    std::uint32_t mThisFileSaved = 0;
    std::uint32_t mBatchSaved = 0;
    std::uint32_t mToDateSaved;
    std::uint32_t mFilesProcessed;
    std::uint32_t mFilesThisRun = 0;
};

/** "37.5%": the part of inOriginal that inSaved is, "0.0%" when there was nothing.
 *  Both counts are rounded to single precision first, as every log so far was written: from 16 MiB on the
 *  last bytes do not count. */
std::string MizerPercentage(std::uint32_t inSaved, std::uint32_t inOriginal);

/** A path as the panel shows it: whole below 30 bytes, else "..." and its last 28. */
std::string MizerPanelName(const std::string& inPath);
