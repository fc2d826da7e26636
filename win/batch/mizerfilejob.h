#pragma once

#include <functional>
#include <optional>
#include <string>

#include "win/batch/mizerbackups.h"
#include "win/batch/mizeroptions.h"
#include "win/batch/mizerpreferences.h"
#include "win/batch/mizershell.h"
#include "win/optimizer/base/pvopthost.h"
#include "wnatom/wnfileclaim.h"

class MizerFileJob;
struct PvOutcome;

/** What a job asks of the batch that it belongs to. */
class MizerJobHost {
public:
    virtual ~MizerJobHost() = default;

    /** The one seam towards the optimizer, which works in place; the job is its host.
     *  @return the size the file has afterwards, smaller than inOriginalSize only when it was replaced */
    virtual std::uint32_t OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize,
                                          MizerFileJob& ioJob, PvOutcome& outOutcome) = 0;

    /** From 0.0 to 1.0. @return whether to stop */
    virtual bool ReportProgress(double inFraction) = 0;
};

/** The file in hand: claimed, measured, made smaller, and brought where it belongs, with its original kept.
 *  Its steps are called once each, in this order; what becomes of the file stands in the result. */
class MizerFileJob : public PvOptHost {
public:
    /** @param ioResult  names the file; borrowed like all that are no plain values */
    MizerFileJob(MizerFileResult& ioResult, const MizerSettings& inSettings, const MizerOptions& inOptions,
                 MizerBackups& ioBackups, MizerJobHost& ioHost, MizerListener& ioListener);

    /** Keeps other processes off the file where they may know of it. @return false when one works on it */
    bool Claim();

    /** Looks how large it is. @return false when there is nothing to work on */
    bool Measure();

    /** Replaces it by a smaller one, or delivers that, unless there is a reason not to.
     *  @throws NvErrorCode  3 cancelled, or why it failed; the file is as it was */
    void MakeSmaller();

    /** The file is as an earlier run has left it, so nothing is tried; it is delivered all the same.
     *  @throws NvErrorCode  why it could not be delivered */
    void LeaveAsDone();

    /** Marks the result with an error that ended the work. */
    void Fail(const NvErrorCode& inError) { mResult.Fail(inError, mErrorIsAbout); }

    const MizerSettings& GetSettings() const { return mSettings; }

    /** Whether the original can be recovered after the file has been replaced. */
    bool KeepsOriginal() const;

    // PvOptHost
    void BackupFile(const char* inPath) override;
    void WillReplace(const char* inPath, const char* inNewPath) override;
    bool ReportProgress(double inFraction) override { return mHost.ReportProgress(inFraction); }

private:
    const char* GetPath() const { return mResult.mPath.c_str(); }
    void SetReason(const PvOutcome& inOutcome);
    bool IsSmaller() const { return mResult.mStatus == MizerStatus::km_Smaller; }

    bool IsWanted();
    void Begin();
    void WorkInPlace();
    void WorkOnCopy();
    void Optimize(const char* inPath);
    void LeaveIfChanged();
    void LeaveIfNotWorthIt();
    void Deliver(const char* inSmallerPath);
    void ReplaceBy(const char* inSmallerPath);
    void KeepOriginal();
    void MarkReplaced();
    void MarkChanged();
    void InDelivery(const std::function<void()>& inStep);

    MizerFileResult& mResult;
    const MizerSettings mSettings;
    const MizerOptions& mOptions;
    MizerBackups& mBackups;
    MizerJobHost& mHost;
    MizerListener& mListener;
    std::optional<WnFileClaim> mClaim;
    std::optional<WnFileState> mState; // when it was measured
    bool mIsOnCopy = false;            // the optimizer works on a private copy
    bool mIsHalfDone = false;
    bool mIsChanged = false;                 // it could not be kept as it was when the work began
    std::optional<MizerBackups::Kept> mKept; // the original
    std::optional<MizerContent> mMade;       // what was last made from it
    MizerReason mErrorIsAbout = MizerReason::km_Error;
};
