#include "win/batch/mizerbrain.h"

#include <chrono>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

#include "win/optimizer/pvopt.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsystem.h"

namespace {

// Where a cancel was noticed. People who read reports know these numbers, so they are no longer those of the
// lines below.
constexpr std::uint32_t km_CancelledBeforeFile = 281;
constexpr std::uint32_t km_CancelledBetweenFiles = 612;

MizerDataFolder MakeDataFolder(const MizerOptions& inOptions, MizerShell& inShell) {
    return {inOptions.mFindDataFolder, [&inShell](const std::string& text, const char* caption) {
                inShell.ShowMessage(text.c_str(), caption, MizerShell::Icon::km_Stop);
            }};
}

[[noreturn]] void ThrowCancelled(std::uint32_t inLine) {
    throw NvErrorCode(NvErrorCode::km_Cancelled, km_MizerSource, inLine);
}

} // namespace

/** Busy, with Pause and Cancel enabled, however the batch ends. */
class MizerBrain::BusyScope {
public:
    explicit BusyScope(MizerBrain& inBrain) : mBrain(inBrain) {
        mBrain.mShell.EnableCommands(true);
        mBrain.mBusy = true;
    }
    ~BusyScope() {
        mBrain.mBusy = false;
        mBrain.mShell.EnableCommands(false);
    }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    MizerBrain& mBrain;
};

MizerBrain::MizerBrain(WnPref& inPrefs, MizerShell& inShell, const PvOptSettings& inSettings,
                       const MizerOptions& inOptions)
    : mPrefs(inPrefs),
      mShell(inShell),
      mSettings(inSettings),
      mOptions(inOptions),
      mBackups(MakeDataFolder(inOptions, inShell)),
      mTotals(inPrefs, inShell),
      mLog(MakeDataFolder(inOptions, inShell)),
      mLedger(MakeDataFolder(inOptions, inShell)) {}

void MizerBrain::ProcessQueue() {
    if (mBusy)
        return;
    if (mQuitRequested) {
        mShell.PostQuit();
        return;
    }
    mCancelFlag = false;
    if (mQueue.IsEmpty())
        return;
    const BusyScope busy(*this);
    if (!std::exchange(mIsMidBatch, true))
        mTotals.StartBatch();
    while (!mQueue.IsEmpty())
        ProcessHead();
}

bool MizerBrain::ProcessWholeQueue() {
    for (;;) {
        try {
            ProcessQueue();
            return true;
        } catch (const NvErrorCode& error) {
            if (error.GetCode() == NvErrorCode::km_Cancelled)
                return false;
        } catch (const std::bad_alloc&) {
            mShell.ShowMessage(mOutOfMemory.c_str(), mTitle.c_str(), MizerShell::Icon::km_Stop);
        }
    }
}

/** Cancel wins: when it was asked for, that is what leaves here, also when the file in hand failed. */
void MizerBrain::ProcessHead() {
    const auto path = mQueue.TakeFirst();
    std::optional<NvErrorCode> error;
    try {
        ProcessFile(path.get());
    } catch (const NvErrorCode& raised) {
        error = raised;
    }
    const bool cancelled = mCancelFlag || (error && error->GetCode() == NvErrorCode::km_Cancelled);
    if (cancelled || mQueue.IsEmpty()) {
        mQueue.Clear();
        mCancelFlag = false;
        mIsMidBatch = false;
        mTotals.EndBatch(cancelled);
    }
    if (error && (!cancelled || error->GetCode() == NvErrorCode::km_Cancelled))
        throw NvErrorCode(*error);
    if (cancelled)
        ThrowCancelled(km_CancelledBetweenFiles);
}

void MizerBrain::ProcessFile(const char* inPath) {
    MizerFileResult result;
    result.mPath = inPath;
    if (MizerIsNamedBackup(inPath)) {
        PumpMessages();
        result.SetReason(MizerReason::km_Backup);
    } else if (!MizerIsNamedGIF(inPath)) {
        result.SetReason(MizerReason::km_NotNamedGIF);
    } else {
        try {
            ProcessNamedGIF(result);
        } catch (const NvErrorCode&) {
            mShell.FileDone(result);
            throw;
        }
    }
    mShell.FileDone(result);
}

void MizerBrain::ProcessNamedGIF(MizerFileResult& ioResult) {
    const char* const path = ioResult.mPath.c_str();
    const MizerSettings settings = MizerSettings::Read(mPrefs);
    MizerFileJob job(ioResult, settings, mOptions, mBackups, *this, mShell);
    const bool isMine = job.Claim();
    if (isMine && mOptions.mSkipsDone && mLedger.Knows(path, GetKindOfWork(settings)))
        ioResult.SetReason(MizerReason::km_Done);
    if (ioResult.mStatus == MizerStatus::km_Skipped) {
        PumpMessages();
        return;
    }
    mShell.FileStarted(path);
    mTotals.StartFile(path);
    if (!job.Measure())
        return;
    mTotals.SetOriginalSize(ioResult.mOriginalSize);
    try {
        if (PumpMessages())
            ThrowCancelled(km_CancelledBeforeFile);
        if (mOptions.mLeavesDone && mLedger.Knows(path, GetKindOfWork(settings)))
            job.LeaveAsDone();
        else
            job.MakeSmaller();
    } catch (const NvErrorCode& error) {
        job.Fail(error);
        throw;
    }
    RecordResult(ioResult, settings);
    PumpMessages();
}

void MizerBrain::RecordResult(const MizerFileResult& inResult, const MizerSettings& inSettings) {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const std::string fullPath = WnGetFullPath(inResult.mPath);
    const bool isSmaller = inResult.mStatus == MizerStatus::km_Smaller;
    if (isSmaller)
        mTotals.AddSaving(inResult.mNewSize);
    if (isSmaller && inSettings.mLog)
        mLog.WriteLogEntry(
            MizerSmallerEntry(now, fullPath.c_str(), inResult.mOriginalSize, inResult.mNewSize));
    else if (!isSmaller && inSettings.mLog && inSettings.mLogAll)
        mLog.WriteLogEntry(MizerUnchangedEntry(now, fullPath.c_str(), MizerOutcomeWords(inResult)));
    const bool isDone = isSmaller || inResult.mReason == MizerReason::km_NothingSmaller;
    if (isDone && mOptions.mNotesDone && !inResult.mOutputPath.empty())
        mLedger.Add(inResult.mOutputPath.c_str(), GetKindOfWork(inSettings), mOptions.mSkipsDone);
}

/** A word for what may be done to a picture: what another kind of work has left may be worth another try. */
std::string MizerBrain::GetKindOfWork(const MizerSettings& inSettings) const {
    std::string kind = inSettings.mIsLossless ? MizerLedger::km_Lossless : MizerLedger::km_Lossy;
    if (!inSettings.mIsLossless && mSettings.mTolerance != km_DifferenceTolerance)
        kind += "-t" + std::to_string(mSettings.mTolerance);
    return kind + (inSettings.mAllowCrop ? "-crop" : "");
}

std::uint32_t MizerBrain::OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize,
                                          MizerFileJob& ioJob, PvOutcome& outOutcome) {
    try {
        PvOptSettings settings = mSettings;
        settings.mKeepsTimes = mOptions.mKeepsTimes;
        settings.mIsLossless = ioJob.GetSettings().mIsLossless;
        settings.mCropsSingleImages = ioJob.GetSettings().mAllowCrop;
        settings.mKeepsOriginal = ioJob.KeepsOriginal();
        PvOptimizer optimizer(ioJob, settings);
        const std::uint32_t newSize = optimizer.OptimizeGIFFile(inPath, inOriginalSize);
        outOutcome = optimizer.GetOutcome();
        return newSize;
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    } catch (const std::length_error&) { // a container was asked for more than there can be
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

bool MizerBrain::PumpMessages() {
    if (mShell.PumpEvents())
        mCancelFlag = true;
    return mCancelFlag;
}

bool MizerBrain::ReportProgress(double inFraction) {
    if (mShell.ShowProgress(inFraction))
        mCancelFlag = true;
    return mCancelFlag;
}

void MizerBrain::Pause() {
    mShell.ShowMessage(PvSay(PvText::km_ClickToContinue).c_str(), PvSay(PvText::km_Paused).c_str(),
                       MizerShell::Icon::km_None);
}
