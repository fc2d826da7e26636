#pragma once

#include <cstdint>
#include <string>

#include "win/batch/filequeue.h"
#include "win/batch/mizerbackups.h"
#include "win/batch/mizerfilejob.h"
#include "win/batch/mizerledger.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizeroptions.h"
#include "win/batch/mizershell.h"
#include "win/batch/mizertotals.h"
#include "win/optimizer/base/pvopthost.h"
#include "win/optimizer/base/pvoptsettings.h"
#include "win/optimizer/base/pvoutcome.h"
#include "win/texts/pvtexts.h"

class WnPref;

/** The batch driver: a queue of files, made smaller one at a time, with log, totals and panel.
 *
 *  One per process, on one thread. Every error leaves as an NvErrorCode; what is still queued then stays
 *  queued, so the caller reports it and calls ProcessQueue again. Only code 3, cancelled by the user, empties
 *  the queue. No error ever costs a picture. */
class MizerBrain : private MizerJobHost {
public:
    /** The first two are borrowed for the driver's life. Reads and shows the totals to date. */
    MizerBrain(WnPref& inPrefs, MizerShell& inShell, const PvOptSettings& inSettings = {},
               const MizerOptions& inOptions = {});

    /** Closes the log and stores the totals. */
    ~MizerBrain() override = default;
    MizerBrain(const MizerBrain&) = delete;
    MizerBrain& operator=(const MizerBrain&) = delete;

    bool AddFileToQueue(const char* inPath) { return mQueue.AddFile(inPath); }
    std::size_t AddFolderToQueue(const char* inPath) { return mQueue.AddFolder(inPath); }

    using Named = FileQueue::Named;
    Named AddNameToQueue(const char* inName) { return mQueue.AddName(inName); }

    /** Takes over the files of another queue. */
    void AddQueue(FileQueue& ioQueue) { mQueue.TakeOver(ioQueue); }

    /** Processes the queue from its head. Does nothing while a batch is running.
     *  @throws NvErrorCode  3 cancelled, with the queue empty; else what one file raised */
    void ProcessQueue();

    /** Processes the queue to its end, whatever happens to single files; the shell is informed of each.
     *  @return false when it was cancelled */
    bool ProcessWholeQueue();

    /** Processes one file, if its name asks for it, and reports to the shell what became of it.
     *  @throws NvErrorCode  3 cancelled, or why the file failed; it is as it was then */
    void ProcessFile(const char* inPath);

    /** Lets the user's commands through. @return whether cancel was asked for. */
    bool PumpMessages();

    /** The Cancel and Pause commands, Exit while a batch runs, and Clear Log File. */
    void Cancel() { mCancelFlag = true; }
    void Pause();
    void RequestQuit() { mQuitRequested = true; }
    void ClearLog() { mLog.ClearLog(); }

    /** For when the program will end without destructors; they are stored at destruction anyway. */
    void StoreTotals() { mTotals.Store(); }

    std::string GetLogPath() const { return mLog.GetPath(); }
    bool IsBusy() const { return mBusy; }

protected:
    std::uint32_t OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize, MizerFileJob& ioJob,
                                  PvOutcome& outOutcome) override;

private:
    class BusyScope;

    bool ReportProgress(double inFraction) override;

    void ProcessHead();
    void ProcessNamedGIF(MizerFileResult& ioResult);
    std::string GetKindOfWork(const MizerSettings& inSettings) const;
    void RecordResult(const MizerFileResult& inResult, const MizerSettings& inSettings);

    bool mCancelFlag = false;
    bool mQuitRequested = false;
    bool mBusy = false;
    bool mIsMidBatch = false; // also while an error of one of its files is out to be reported
    WnPref& mPrefs;
    MizerShell& mShell;
    PvOptSettings mSettings;
    MizerOptions mOptions;
    FileQueue mQueue;
    MizerBackups mBackups;
    MizerTotals mTotals;
    MizerLog mLog;
    MizerLedger mLedger;
    const std::string mTitle = PvSay(PvText::km_Parvigif);
    const std::string mOutOfMemory = PvSay(PvText::km_OutOfMemory); // while there is some
};
