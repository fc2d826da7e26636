#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "win/batch/filequeue.h"
#include "win/batch/mizershell.h"
#include "win/batch/mizertotals.h"
#include "win/crew/creworder.h"
#include "win/crew/crewrecord.h"

class WnChild;
class WnPref;

struct MizerCrewOptions {
    std::size_t mWorkers = 1;
    std::vector<std::string> mArguments; ///< with which this program is one of them and calls CrewWork
};

/** The batch driver for several files at once, each in the hands of a worker process; every process has one
 *  thread, as with MizerBrain. To the shell it looks like a batch that works on one file after the other: it
 *  hears of them in the order of the queue, of each from its start to its end. Log and list of files done are
 *  kept by the workers, the totals here.
 *
 *  A worker that ends unasked costs the file in its hands, which is as it was or whole and smaller, and is
 *  replaced. If this process ends, the workers stop at the next step of their files. */
class MizerCrew {
public:
    using FindPlace = std::function<std::string(const std::string&)>;

    /** Starts the workers. The first two are borrowed for the driver's life.
     *  @param inFindPlace   a file's place below the output folder, if there is one
     *  @throws NvErrorCode  when not one can be started */
    MizerCrew(WnPref& ioPrefs, MizerShell& inShell, MizerCrewOptions inOptions, FindPlace inFindPlace);

    /** Ends the workers and stores the totals. */
    ~MizerCrew();
    MizerCrew(const MizerCrew&) = delete;
    MizerCrew& operator=(const MizerCrew&) = delete;

    /** Processes a queue to its end, whatever happens to single files, which the shell hears of. Called once.
     *  @return false when it was cancelled */
    bool ProcessWholeQueue(FileQueue& ioQueue);

    /** Holds all workers until the user has seen a message. */
    void Pause();

private:
    struct File;
    struct Worker;

    void TakeOver(FileQueue& ioQueue);
    void HandOut();
    void HandOut(Worker& ioWorker, File& ioFile);
    void GiveUpTheRest();
    void Listen();
    void ListenTo(Worker& ioWorker);
    bool Hear(Worker& ioWorker, const CrewRecord& inRecord);
    bool HearOfResult(Worker& ioWorker, const CrewRecord& inRecord);
    bool HearMessage(const CrewRecord& inRecord);
    bool HearOfEnd(Worker& ioWorker, const CrewRecord& inRecord);
    void Replace(Worker& ioWorker);
    void EndFile(Worker& ioWorker, const MizerFileResult& inResult);
    void ShowFirst();
    void ShowStart(File& ioFile);
    void ShowEnd(File& ioFile);
    void ShowProgress();
    void SendAll(CrewRecord::Kind inKind);
    bool IsAnyoneBusy() const;

    MizerShell& mShell;
    MizerTotals mTotals;
    MizerCrewOptions mOptions;
    FindPlace mFindPlace;
    std::vector<Worker> mWorkers;
    std::vector<File> mFiles; // in the order of the queue
    std::optional<CrewOrder> mOrder;
    std::size_t mShown = 0;        // how many files the shell has seen the end of
    std::uint64_t mBytesAhead = 0; // of files that are done, but not shown, since others come before them
    bool mIsCancelled = false;
};
