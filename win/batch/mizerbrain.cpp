#include "win/batch/mizerbrain.h"

#include <chrono>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

#include "nvcode2/file/nvfile.h"
#include "win/batch/mizerdelivery.h"
#include "win/batch/mizersettings.h"
#include "win/optimizer/pvopt.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnfileclaim.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

namespace {

// Where a cancel was noticed. People who read reports know these numbers, so they are no longer those of the
// lines below.
constexpr const char* km_Source = "win/mizerbrain";
constexpr std::uint32_t km_CancelledBeforeFile = 281;
constexpr std::uint32_t km_CancelledBetweenFiles = 612;

[[noreturn]] void ThrowCancelled(std::uint32_t inLine) {
    throw NvErrorCode(NvErrorCode::km_Cancelled, km_Source, inLine);
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
      mBackups(inPrefs),
      mTotals(inPrefs, inShell),
      mLog(inPrefs, inShell),
      mLedger(inShell, MizerSettings::Read(inPrefs).mIsLossless) {}

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
    while (!mQueue.IsEmpty())
        ProcessHead();
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
        result.mStatus = MizerStatus::km_Skipped;
        result.mSkip = MizerSkip::km_Backup;
    } else if (!MizerIsNamedGIF(inPath)) {
        result.mStatus = MizerStatus::km_Skipped;
        result.mSkip = MizerSkip::km_NotNamedGIF;
    } else {
        ProcessNamedGIF(result);
    }
    mShell.FileDone(result);
}

void MizerBrain::ProcessNamedGIF(MizerFileResult& ioResult) {
    std::optional<WnFileClaim> claim;
    if (mOptions.mSharesFiles && !mOptions.mDelivery) // else the file is only read
        claim.emplace(mShell.GetDataFolder(), ioResult.mPath.c_str());
    if (claim && !claim->IsMine())
        ioResult.mSkip = MizerSkip::km_InUse;
    else if (mOptions.mSkipsDone && mLedger.Knows(ioResult.mPath.c_str()))
        ioResult.mSkip = MizerSkip::km_Done;
    else
        return WorkOnNamedGIF(ioResult);
    PumpMessages();
    ioResult.mStatus = MizerStatus::km_Skipped;
}

void MizerBrain::WorkOnNamedGIF(MizerFileResult& ioResult) {
    mShell.FileStarted(ioResult.mPath.c_str());
    mTotals.StartFile(ioResult.mPath.c_str());
    if (!MeasureFile(ioResult))
        return;
    try {
        OptimizeFile(ioResult);
    } catch (const NvErrorCode& error) {
        const bool cancelled = error.GetCode() == NvErrorCode::km_Cancelled;
        ioResult.mStatus = cancelled ? MizerStatus::km_Cancelled : MizerStatus::km_Failed;
        ioResult.mError = error;
        ioResult.mBackupFailed = mBackupFailed;
        ioResult.mDeliveryFailed = mDeliveryFailed;
        mShell.FileDone(ioResult);
        throw;
    }
}

/** @return false when there is nothing to work on; the result tells why. */
bool MizerBrain::MeasureFile(MizerFileResult& ioResult) {
    ioResult.mOriginalSize = ioResult.mNewSize = GetFileSizeOnDisk(ioResult.mPath.c_str(), ioResult.mError);
    if (ioResult.mOriginalSize != 0)
        return true;
    ioResult.mStatus = ioResult.mError ? MizerStatus::km_Failed : MizerStatus::km_Skipped;
    ioResult.mSkip = ioResult.mError ? MizerSkip::km_None : MizerSkip::km_Empty;
    return false;
}

std::uint32_t MizerBrain::GetFileSizeOnDisk(const char* inPath, std::optional<NvErrorCode>& outError) {
    try {
        NvFile file(inPath);
        file.Open(NvFile::km_ReadPerm);
        return file.GetLength();
    } catch (const NvErrorCode& error) {
        outError = error;
        return 0;
    }
}

void MizerBrain::OptimizeFile(MizerFileResult& ioResult) {
    mTotals.SetOriginalSize(ioResult.mOriginalSize);
    mBackupFailed = mDeliveryFailed = mGainsTooLittle = false;
    mBackupPath.clear();
    if (PumpMessages())
        ThrowCancelled(km_CancelledBeforeFile);
    PvOutcome outcome;
    ioResult.mNewSize =
        WorkOnFile(ioResult.mPath.c_str(), ioResult.mOriginalSize, outcome, ioResult.mOutputPath);
    ioResult.mError = outcome.mLoadError;
    ioResult.mGateReason = outcome.mGateReason;
    ioResult.mFrameCount = outcome.mFrameCount;
    ioResult.mWorstLook = outcome.mWorstLook;
    if (ioResult.mNewSize < ioResult.mOriginalSize) {
        ioResult.mStatus = MizerStatus::km_Smaller;
        ioResult.mBackupPath = mBackupPath;
    } else {
        ioResult.mStatus = ioResult.mError ? MizerStatus::km_Failed : MizerStatus::km_Unchanged;
    }
    RecordResult(ioResult);
    if (mOptions.mSkipsDone && !mOptions.mDelivery && !ioResult.mError && ioResult.mGateReason.empty() &&
        !mGainsTooLittle)
        mLedger.Add(ioResult.mPath.c_str());
    PumpMessages();
}

std::uint32_t MizerBrain::WorkOnFile(const char* inPath, std::uint32_t inOriginalSize, PvOutcome& outOutcome,
                                     std::string& outPlace) {
    std::error_code error; // a file without a time has none to keep
    const auto time = std::filesystem::last_write_time(WnMakePath(inPath), error);
    outPlace = mOptions.mDelivery ? "" : inPath;
    const bool needsCopy = mOptions.mDelivery || mOptions.mLeastSaving.IsSet();
    const std::uint32_t newSize = needsCopy ? WorkOnCopy(inPath, inOriginalSize, outOutcome, outPlace)
                                            : OptimizeGIFFile(inPath, inOriginalSize, outOutcome);
    if (!needsCopy && newSize < inOriginalSize)
        mShell.ResultMade(inPath);
    const bool isWritten = mOptions.mDelivery ? !outPlace.empty() : newSize < inOriginalSize;
    if (mOptions.mKeepsTimes && isWritten && !error)
        std::filesystem::last_write_time(WnMakePath(outPlace), time, error);
    return newSize;
}

/** Leaves the file alone until both passes are through, so that nothing is replaced that is not worth it. */
std::uint32_t MizerBrain::WorkOnCopy(const char* inPath, std::uint32_t inOriginalSize, PvOutcome& outOutcome,
                                     std::string& outPlace) {
    if (mOptions.mDelivery)
        TryToDeliver([&] { mOptions.mDelivery->Prepare(inPath); });
    const auto state = WnGetFileState(inPath);
    const WnPrivateFolder folder;
    mCopyPath = folder.MakePath("COPY.GIF");
    const char* const copy = mCopyPath.c_str();
    MizerCopyFile(inPath, copy);
    std::uint32_t newSize = inOriginalSize;
    try {
        newSize = OptimizeGIFFile(copy, inOriginalSize, outOutcome);
    } catch (const NvErrorCode& error) {
        if (error.GetCode() != NvErrorCode::km_Cancelled)
            DeliverResult(inPath, inPath);
        throw;
    }
    if (WnGetFileState(inPath) != state) {
        outOutcome.mGateReason = "another program changed the file meanwhile";
        newSize = inOriginalSize;
    }
    mGainsTooLittle = newSize < inOriginalSize && !mOptions.mLeastSaving.IsReached(inOriginalSize, newSize);
    if (mGainsTooLittle)
        newSize = inOriginalSize;
    if (newSize < inOriginalSize) {
        mShell.BeforeReplace(inPath);
        mShell.ResultMade(copy);
    }
    outPlace = DeliverResult(inPath, newSize < inOriginalSize ? copy : inPath);
    return newSize;
}

std::string MizerBrain::DeliverResult(const char* inPath, const char* inResultPath) {
    std::string place;
    if (mOptions.mDelivery) {
        TryToDeliver([&] { place = mOptions.mDelivery->Deliver(inPath, inResultPath); });
        if (!place.empty())
            mBackups.RemoveLeftoversBeside(place.c_str());
    } else if (inResultPath != inPath) {
        WnCheckReplaceable(inPath);
        WnSafeFile file(inPath);
        MizerCopyFile(inResultPath, file.GetTemporaryPath());
        BackupFile(inPath);
        file.Commit();
        place = inPath;
    }
    return place;
}

void MizerBrain::TryToDeliver(const std::function<void()>& inStep) {
    try {
        inStep();
    } catch (const NvErrorCode&) {
        mDeliveryFailed =
            mOptions.mDelivery->HasPlaces(); // the person should know which of the two places it is about
        throw;
    }
}

void MizerBrain::RecordResult(const MizerFileResult& inResult) {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const char* path = inResult.mPath.c_str();
    if (inResult.mStatus == MizerStatus::km_Smaller) {
        mTotals.AddSaving(inResult.mNewSize);
        mLog.WriteLogEntry(MizerSmallerEntry(now, path, inResult.mOriginalSize, inResult.mNewSize));
    } else if (MizerSettings::Read(mPrefs).mLogAll) {
        mLog.WriteLogEntry(MizerUnchangedEntry(now, path));
    }
}

std::uint32_t MizerBrain::OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize,
                                          PvOutcome& outOutcome) {
    try {
        const MizerSettings preferred = MizerSettings::Read(mPrefs);
        PvOptSettings settings = mSettings;
        settings.mIsLossless = preferred.mIsLossless;
        settings.mCropsSingleImages = preferred.mAllowCrop;
        PvOptimizer optimizer(*this, settings);
        const std::uint32_t newSize = optimizer.OptimizeGIFFile(inPath, inOriginalSize);
        outOutcome = optimizer.GetOutcome();
        return newSize;
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    } catch (const std::length_error&) { // a container was asked for more than there can be
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

void MizerBrain::BackupFile(const char* inPath) {
    if (inPath == mCopyPath)
        return;
    mBackups.RemoveLeftoversBeside(inPath);
    try {
        mBackupPath = mBackups.Write(inPath);
    } catch (const NvErrorCode&) {
        mBackupFailed = true; // the person should know which of the two files it is about
        throw;
    }
    mShell.BeforeReplace(inPath);
}

bool MizerBrain::PumpMessages() {
    if (mShell.PumpEvents())
        mCancelFlag = true;
    return mCancelFlag;
}

bool MizerBrain::ReportProgress(double inFraction) {
    if (mShell.ShowProgress(inFraction))
        mCancelFlag = true;
    return !mCancelFlag;
}

void MizerBrain::Pause() {
    mShell.ShowMessage("Click 'OK' to continue...", "OPERATION PAUSED", MizerShell::Icon::km_None);
}
