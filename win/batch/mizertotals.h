#pragma once

#include <cstdint>
#include <string>

class MizerShell;
class WnPref;

/** The numbers of the file in hand, of this batch and of all runs to date, and their texts in the panel.
 *
 *  Bytes throughout, unsigned 32-bit, wrapping silently. The totals to date are read from the preferences at
 *  construction; what this run did is added to what they hold by the time of its end. Numbers are kept with
 *  or without a panel. */
class MizerTotals {
public:
    /** Both are borrowed for the object's life. Writes the start-up texts. */
    MizerTotals(WnPref& inPrefs, MizerShell& inShell);
    ~MizerTotals();
    MizerTotals(const MizerTotals&) = delete;
    MizerTotals& operator=(const MizerTotals&) = delete;

    /** Adds what was done since the last time to the totals to date that are stored. */
    void Store();

    /** Nothing is saved yet. */
    void StartBatch();

    /** No file is in hand any more. What the last one saved is left to be seen, unless the
     *  batch was cancelled. */
    void EndBatch(bool inIsCancelled);

    /** A new file is in hand: nothing saved yet, counted as processed, its name shown. */
    void StartFile(const char* inPath);

    /** Its size before the work on it. */
    void SetOriginalSize(std::uint32_t inSize);

    /** It was made smaller: shows and adds its saving to the batch and to the totals to date. */
    void AddSaving(std::uint32_t inNewSize);

private:
    void ShowThisFile(std::uint32_t inNewSize);
    void ShowThisBatch() const;
    void ShowToDate() const;
    void ShowFilesProcessed() const;

    WnPref& mPrefs;
    MizerShell& mShell;
    std::uint32_t mOriginalSize = 0;
    std::uint32_t mBatchOriginal = 0; // of the files that were made smaller
    std::uint32_t mThisFileSaved = 0;
    std::uint32_t mBatchSaved = 0;
    std::uint32_t mToDateSaved;
    std::uint32_t mFilesProcessed;
    std::uint32_t mSavedToStore = 0; // since the last time
    std::uint32_t mFilesToStore = 0;
};

/** "37.5%": the part of inOriginal that inSaved is, "0.0%" when there was nothing.
 *  Both counts are rounded to single precision first, as every log so far was written: from 16 MiB on the
 *  last bytes do not count. */
std::string MizerPercentage(std::uint32_t inSaved, std::uint32_t inOriginal);

/** A path as the panel shows it: whole below 30 bytes, else "..." and its last 28, less what is left there of
 *  a character of UTF-8. */
std::string MizerPanelName(const std::string& inPath);
