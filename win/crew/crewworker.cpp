#include "win/crew/crewworker.h"

#include <chrono>

#include "win/batch/mizerbrain.h"
#include "win/crew/crewrecord.h"
#include "wnatom/wnchild.h"
#include "wnatom/wnpref.h"

namespace {

using Kind = CrewRecord::Kind;

/** The batch as the other process sees it. */
class WorkerShell : public MizerShell {
public:
    /** Waits for the next file. @return false when there is none any more */
    bool WaitForJob(CrewJob& outJob) {
        while (!mIsCancelled) {
            const CrewRecord record = Wait();
            if (record.mKind == Kind::km_Job)
                return CrewUnpack(record, outJob);
            Obey(record);
        }
        return false;
    }

    bool PumpEvents() override {
        if (WnParent::HasMore())
            Fill();
        while (const auto record = mInput.Take())
            Obey(*record);
        mIsCancelled = mIsCancelled || mIsAlone;
        return mIsCancelled;
    }

    bool ShowProgress(double inFraction) override {
        constexpr std::chrono::milliseconds between(50);
        const auto now = std::chrono::steady_clock::now();
        if (now - mLastShown >= between) {
            mLastShown = now;
            Send(CrewPack(Kind::km_Progress, CrewProgress{inFraction}));
        }
        return PumpEvents();
    }

    void FileStarted(const char* /*inPath*/) override { Send(CrewPack(Kind::km_Started)); }

    void BeforeReplace(const char* /*inPath*/) override {
        Send(CrewPack(Kind::km_BeforeReplace));
        WaitFor(Kind::km_GoOn);
    }

    void ResultMade(const char* /*inPath*/, const char* inResultPath) override {
        Send(CrewPack(Kind::km_ResultMade, CrewResultMade{inResultPath}));
        WaitFor(Kind::km_GoOn);
    }

    void FileDone(const MizerFileResult& inResult) override { Send(CrewPack(Kind::km_Done, inResult)); }

    void ShowMessage(const char* inText, const char* inCaption, Icon inIcon) override {
        Send(CrewPack(Kind::km_Message, CrewMessage{inText, inCaption, inIcon == Icon::km_Stop}));
    }

private:
    void Send(const std::string& inBytes) { mIsAlone = !WnParent::Send(inBytes) || mIsAlone; }

    /** Waits for bytes. @return false when no more will come */
    bool Fill() {
        const std::string bytes = WnParent::Receive();
        mInput.Add(bytes);
        mIsAlone = mIsAlone || bytes.empty();
        return !mIsAlone;
    }

    /** The next record; a cancel when the other process is gone. */
    CrewRecord Wait() {
        for (;;) {
            if (auto record = mInput.Take())
                return *record;
            if (mInput.IsBroken() || !Fill())
                return {Kind::km_Cancel, {}};
        }
    }

    void Obey(const CrewRecord& inRecord) {
        if (inRecord.mKind == Kind::km_Pause)
            WaitFor(Kind::km_Resume);
        else if (inRecord.mKind == Kind::km_Cancel)
            mIsCancelled = true;
    }

    /** A cancel waits, too: what is being waited for comes before anything else happens to the file. */
    void WaitFor(Kind inKind) {
        for (bool hasCome = false; !hasCome && !mIsAlone && !mInput.IsBroken();) {
            const CrewRecord record = Wait();
            hasCome = record.mKind == inKind;
            if (!hasCome)
                Obey(record);
        }
    }

    CrewInput mInput;
    bool mIsCancelled = false;
    bool mIsAlone = false; // the other process is gone
    std::chrono::steady_clock::time_point mLastShown;
};

} // namespace

void CrewWork(WnPref& ioPrefs, const PvOptSettings& inSettings, const MizerOptions& inOptions,
              const std::function<void(const std::string&, const std::string&)>& inOnJob) {
    ioPrefs.KeepStoreAsItIs();
    WorkerShell shell;
    MizerBrain brain(ioPrefs, shell, inSettings, inOptions);
    for (CrewJob job; shell.WaitForJob(job);) {
        inOnJob(job.mPath, job.mPlace);
        try {
            brain.ProcessFile(job.mPath.c_str());
        } catch (const NvErrorCode&) { // the other process knows from the result
        }
    }
}
