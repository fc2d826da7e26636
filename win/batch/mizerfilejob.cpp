#include "win/batch/mizerfilejob.h"

#include <cerrno>

#include "nvcode2/file/nvfile.h"
#include "win/batch/mizerdelivery.h"
#include "win/batch/mizertotals.h"
#include "win/optimizer/base/pvoutcome.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

MizerFileJob::MizerFileJob(MizerFileResult& ioResult, const MizerSettings& inSettings,
                           const MizerOptions& inOptions, MizerBackups& ioBackups, MizerJobHost& ioHost,
                           MizerListener& ioListener)
    : mResult(ioResult),
      mSettings(inSettings),
      mOptions(inOptions),
      mBackups(ioBackups),
      mHost(ioHost),
      mListener(ioListener) {}

bool MizerFileJob::Claim() {
    if (!mOptions.mSharesFiles || mOptions.mDelivery) // with the latter the file is only read
        return true;
    mClaim.emplace(mOptions.mFindDataFolder(), GetPath());
    if (!mClaim->IsMine())
        mResult.SetReason(MizerReason::km_InUse);
    return mClaim->IsMine();
}

bool MizerFileJob::Measure() {
    try {
        NvFile file(GetPath());
        file.Open(NvFile::km_ReadPerm);
        mResult.mOriginalSize = mResult.mNewSize = file.GetLength();
        if (mResult.mOriginalSize == 0)
            mResult.SetReason(MizerReason::km_Empty);
        mState = WnGetFileState(GetPath());
    } catch (const NvErrorCode& error) {
        mResult.Fail(error);
    }
    return mResult.mOriginalSize != 0;
}

void MizerFileJob::MakeSmaller() {
    Begin();
    if (mOptions.mDelivery || mOptions.mLeastSaving.IsSet())
        WorkOnCopy();
    else
        WorkInPlace();
}

/** Also where nothing will be done to the file: what a killed run has left beside it goes. */
void MizerFileJob::Begin() {
    if (mOptions.mDelivery)
        return;
    mResult.mOutputPath = mResult.mPath;
    mBackups.RemoveLeftoversBeside(GetPath());
}

void MizerFileJob::LeaveAsDone() {
    Begin();
    mResult.SetReason(MizerReason::km_DoneBefore);
    if (mOptions.mDelivery && IsWanted())
        Deliver(nullptr);
}

/** Whether the place for the result still waits for one; marks the result when it does not. */
bool MizerFileJob::IsWanted() {
    bool isWanted = true;
    InDelivery([&] { isWanted = mOptions.mDelivery->Prepare(GetPath()); });
    if (!isWanted)
        mResult.SetReason(MizerReason::km_UpToDate);
    return isWanted;
}

void MizerFileJob::WorkInPlace() {
    try {
        Optimize(GetPath());
    } catch (const NvErrorCode&) {
        if (!mIsChanged)
            throw;
        return MarkChanged();
    }
    if (IsSmaller() && mKept && mMade && !mIsHalfDone)
        mBackups.GetOrigins().Add(*mMade, mKept->mContent, MizerOrigins::Work::km_Done);
    if (IsSmaller())
        mListener.ResultMade(GetPath(), GetPath());
    else
        LeaveIfChanged();
}

/** The file is left alone until both passes are through, so that nothing is replaced that is not worth it.
 *  Writing the result beside its target at once would save a copy, but touch the folder of every file that
 *  gains too little; and a rename from here might have to cross file systems. */
void MizerFileJob::WorkOnCopy() {
    if (mOptions.mDelivery && !IsWanted())
        return;
    const WnPrivateFolder folder;
    const std::string copy = folder.MakePath("COPY.GIF");
    MizerCopyFile(GetPath(), copy.c_str());
    mIsOnCopy = true;
    try {
        Optimize(copy.c_str());
    } catch (const NvErrorCode& error) {
        if (mOptions.mDelivery && error.GetCode() != NvErrorCode::km_Cancelled)
            Deliver(nullptr); // nothing is to be missing there
        throw;
    }
    mIsOnCopy = false;
    LeaveIfChanged();
    LeaveIfNotWorthIt();
    if (mOptions.mDelivery)
        Deliver(IsSmaller() ? copy.c_str() : nullptr);
    else if (IsSmaller())
        ReplaceBy(copy.c_str());
    if (IsSmaller())
        mListener.ResultMade(GetPath(), copy.c_str());
}

void MizerFileJob::Optimize(const char* inPath) {
    PvOutcome outcome;
    mResult.mNewSize = mHost.OptimizeGIFFile(inPath, mResult.mOriginalSize, *this, outcome);
    mResult.mFrameCount = outcome.mFrameCount;
    mIsHalfDone = outcome.mIsHalfDone;
    mResult.mWorstLook = outcome.mWorstLook;
    mResult.mDamage = MizerDamageWords(outcome.mDamage);
    SetReason(outcome);
}

void MizerFileJob::SetReason(const PvOutcome& inOutcome) {
    if (mResult.GetSaved() != 0) {
        MarkReplaced();
    } else if (inOutcome.mLoadError) {
        mResult.Fail(*inOutcome.mLoadError);
        if (inOutcome.mDamage.mKind == NvDataDamage::km_Undefined)
            mResult.SetReason(MizerReason::km_DamagedFrame, mResult.mDamage);
    } else if (inOutcome.mIsChangedMeanwhile) {
        mResult.SetReason(MizerReason::km_ChangedMeanwhile);
    } else if (inOutcome.mIsTooMuchWork) {
        mResult.SetReason(MizerReason::km_TooMuchWork);
    } else if (!mResult.mDamage.empty() && !KeepsOriginal()) {
        mResult.SetReason(MizerReason::km_DamagedNotKept, mResult.mDamage);
    } else if (!inOutcome.mGateReason.empty()) {
        mResult.SetReason(MizerReason::km_WouldDiffer, inOutcome.mGateReason);
    } else {
        mResult.SetReason(MizerReason::km_NothingSmaller);
    }
}

bool MizerFileJob::KeepsOriginal() const {
    return mSettings.mBackup || (mOptions.mDelivery && mOptions.mDelivery->HasPlaces());
}

/** What was found out is about a picture that is no more. */
void MizerFileJob::LeaveIfChanged() {
    if (mResult.mStatus != MizerStatus::km_Failed && WnGetFileState(GetPath()) != mState)
        MarkChanged();
}

void MizerFileJob::MarkChanged() {
    mResult.mNewSize = mResult.mOriginalSize;
    mResult.SetReason(MizerReason::km_ChangedMeanwhile);
}

void MizerFileJob::MarkReplaced() {
    mResult.mBackupPath = mKept ? mKept->mPath : std::string();
    if (!mResult.mDamage.empty())
        mResult.SetReason(MizerReason::km_ReplacedDamaged,
                          mKept ? PvSay(PvText::km_DamagedAndKeptAs, {mResult.mDamage, mKept->mPath})
                                : PvSay(PvText::km_DamagedAndKept, {mResult.mDamage}));
    else if (mKept && mKept->mIsAside)
        mResult.SetReason(MizerReason::km_KeptAside, mKept->mPath);
    else
        mResult.SetReason(MizerReason::km_Replaced);
}

void MizerFileJob::LeaveIfNotWorthIt() {
    if (!IsSmaller() || mOptions.mLeastSaving.IsReached(mResult.mOriginalSize, mResult.mNewSize))
        return;
    const std::uint32_t saved = mResult.GetSaved();
    mResult.mNewSize = mResult.mOriginalSize;
    mResult.SetReason(MizerReason::km_GainsTooLittle,
                      PvSay(saved == 1 ? PvText::km_SavesOneByte : PvText::km_SavesBytes,
                            {std::to_string(saved), MizerPercentage(saved, mResult.mOriginalSize)}));
}

/** @param inSmallerPath  null when it could not be made smaller */
void MizerFileJob::Deliver(const char* inSmallerPath) {
    if (inSmallerPath)
        mListener.BeforeReplace(GetPath());
    InDelivery([&] { mResult.mOutputPath = mOptions.mDelivery->Deliver(GetPath(), inSmallerPath); });
}

void MizerFileJob::ReplaceBy(const char* inSmallerPath) {
    WnCheckReplaceable(GetPath());
    WnSafeFile file(GetPath());
    file.CopyFrom(inSmallerPath);
    if (mOptions.mKeepsTimes)
        file.KeepTimesOf(GetPath());
    file.Finish();
    if (MizerReadContent(file.GetTemporaryPath()) != MizerReadContent(inSmallerPath))
        NvThrowWithSystemError(NvErrorCode::km_Failure, EIO);
    try {
        KeepOriginal();
    } catch (const NvErrorCode&) {
        if (!mIsChanged)
            throw;
        return MarkChanged();
    }
    WillReplace(GetPath(), file.GetTemporaryPath());
    if (!mState || !file.CommitOver(*mState))
        return MarkChanged();
    if (mKept && mMade)
        mBackups.GetOrigins().Add(*mMade, mKept->mContent, MizerOrigins::Work::km_Done);
    MarkReplaced();
}

void MizerFileJob::BackupFile(const char* /*inPath*/) {
    if (!mIsOnCopy)
        KeepOriginal();
}

/** Noted before it happens: a run that is killed in between has at worst noted what never came to be. */
void MizerFileJob::WillReplace(const char* /*inPath*/, const char* inNewPath) {
    if (mIsOnCopy || !mKept)
        return;
    mMade = MizerReadContent(inNewPath);
    mBackups.GetOrigins().Add(*mMade, mKept->mContent, MizerOrigins::Work::km_Begun);
}

void MizerFileJob::KeepOriginal() {
    mErrorIsAbout = MizerReason::km_NoBackup;
    if (mSettings.mBackup) {
        try {
            mKept =
                mState ? mBackups.BackupFile(GetPath(), *mState, mSettings.mOverwriteBackups) : std::nullopt;
        } catch (const NvErrorCode& error) {
            NvThrowWithSystemError(error.GetCode(), error.GetSystemError(), km_MizerSource);
        }
        mIsChanged = !mKept;
        if (mIsChanged)
            NvThrow(NvErrorCode::km_Failure);
    }
    mErrorIsAbout = MizerReason::km_Error;
    mListener.BeforeReplace(GetPath());
}

void MizerFileJob::InDelivery(const std::function<void()>& inStep) {
    if (mOptions.mDelivery->HasPlaces())
        mErrorIsAbout = MizerReason::km_NotDelivered;
    inStep();
    mErrorIsAbout = MizerReason::km_Error;
}
