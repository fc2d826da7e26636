#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "win/batch/filequeue.h"
#include "win/batch/mizerbackups.h"
#include "win/batch/mizerledger.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizeroptions.h"
#include "win/batch/mizershell.h"
#include "win/batch/mizertotals.h"
#include "win/optimizer/base/pvopthost.h"
#include "win/optimizer/base/pvoptsettings.h"
#include "win/optimizer/base/pvoutcome.h"

class WnPref;

/** The batch driver: a queue of files, made smaller one at a time, with log, totals and panel.
 *
 *  One per process, on one thread. Every error leaves as an NvErrorCode; what is still queued then stays
 *  queued, so the caller reports it and calls ProcessQueue again. Only code 3, cancelled by the user, empties
 *  the queue. No error ever costs a picture. */
class MizerBrain : private PvOptHost {
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

    /** Processes the queue from its head. Does nothing while a batch is running.
     *  @throws NvErrorCode  3 cancelled, with the queue empty; else what one file raised */
    void ProcessQueue();

    /** Processes one file, if its name asks for it; tells the shell what became of it.
     *  @throws NvErrorCode  3 cancelled, or why the file failed; it is as it was then */
    void ProcessFile(const char* inPath);

    /** Copies a file, whole or not at all, to its name with ".BAK" appended; the preferences BACKUP and OBACK
     *  say whether.
     *  @throws NvErrorCode  1 it cannot be read, or what stands at the backup's name is no regular file; 2; 5
     *                       no right to add a file to the folder; 22 */
    void BackupFile(const char* inPath) override;

    /** Lets the user's commands through. @return whether cancel was asked for. */
    bool PumpMessages();

    /** The Cancel and Pause commands, Exit while a batch runs, and Clear Log File. */
    void Cancel() { mCancelFlag = true; }
    void Pause();
    void RequestQuit() { mQuitRequested = true; }
    void ClearLog() { mLog.ClearLog(); }

    bool IsBusy() const { return mBusy; }

protected:
    /** The one seam towards the optimizer.
     *  @return the size the file has afterwards, smaller than inOriginalSize only when it was replaced */
    virtual std::uint32_t OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize,
                                          PvOutcome& outOutcome);

private:
    class BusyScope;

    bool ReportProgress(double inFraction) override;

    /** Bytes; 0 when it has none, and when it cannot be opened or is too large, with the reason. */
    static std::uint32_t GetFileSizeOnDisk(const char* inPath, std::optional<NvErrorCode>& outError);

    void ProcessHead();
    void ProcessNamedGIF(MizerFileResult& ioResult);
    void WorkOnNamedGIF(MizerFileResult& ioResult);
    bool MeasureFile(MizerFileResult& ioResult);
    void OptimizeFile(MizerFileResult& ioResult);
    std::uint32_t WorkOnFile(const char* inPath, std::uint32_t inOriginalSize, PvOutcome& outOutcome,
                             std::string& outPlace);
    std::uint32_t WorkOnCopy(const char* inPath, std::uint32_t inOriginalSize, PvOutcome& outOutcome,
                             std::string& outPlace);
    std::string DeliverResult(const char* inPath, const char* inResultPath);
    void TryToDeliver(const std::function<void()>& inStep);
    void RecordResult(const MizerFileResult& inResult);

    bool mCancelFlag = false;
    bool mQuitRequested = false;
    bool mBusy = false;
    bool mBackupFailed = false; // these four of the file in hand
    bool mDeliveryFailed = false;
    std::string mBackupPath;
    bool mGainsTooLittle = false;
    std::string mCopyPath; // the private copy that is worked on, if any
    WnPref& mPrefs;
    MizerShell& mShell;
    PvOptSettings mSettings;
    MizerOptions mOptions;
    FileQueue mQueue;
    MizerBackups mBackups;
    MizerTotals mTotals;
    MizerLog mLog;
    MizerLedger mLedger;
};
