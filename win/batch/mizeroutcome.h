#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifdamage.h"
#include "win/optimizer/base/pvframelook.h"

/** What became of a file of the batch, and the words for it. */

/** Where errors of the batch itself say that they come from: people who read reports know this name. */
inline constexpr const char* km_MizerSource = "win/mizerbrain";

enum class MizerStatus {
    km_Smaller,
    km_Unchanged,
    km_Skipped,
    km_Failed,
    km_Cancelled,
};

/** Why a file was not replaced by a smaller one. Each has its words, and the status that goes with it, in one
 *  table; every one but the first three leaves the file as it was. */
enum class MizerReason {
    km_Replaced,
    km_KeptAside,       ///< replaced; particulars: where its original is, the usual name being taken
    km_ReplacedDamaged, ///< particulars: the damage, and where the original is
    km_DamagedNotKept,  ///< left alone, since no backup would be kept; particulars: the damage
    km_DamagedFrame,    ///< left alone, since players differ; particulars: the damage
    km_TooMuchWork,     ///< left alone, since it would take too long
    km_NothingSmaller,
    km_DoneBefore,       ///< an earlier run has finished with it, so nothing was tried
    km_GainsTooLittle,   ///< particulars: how much
    km_ChangedMeanwhile, ///< by another program
    km_WouldDiffer,      ///< particulars: what a viewer would notice
    km_Backup,           ///< its name says so
    km_NotNamedGIF,      ///< its name does not say so
    km_NamedBefore,      ///< it is part of the batch already
    km_Empty,
    km_InUse,        ///< another run works on it
    km_Done,         ///< already done by an earlier run
    km_UpToDate,     ///< its result is there already
    km_NoGIFs,       ///< a folder or pattern, without any
    km_Error,        ///< particulars: which, as for the next two
    km_NoBackup,     ///< the error is about the backup
    km_NotDelivered, ///< the error is about the place that the result should have gone to
    km_WorkerEnded,  ///< the process in whose hands it was
    km_Cancelled,
};

/** Worker processes send these: a new field is to be named in win/crew/crewrecord.cpp as well. */
struct MizerFileResult {
    std::string mPath;
    MizerStatus mStatus = MizerStatus::km_Unchanged;
    MizerReason mReason = MizerReason::km_NothingSmaller;
    std::string mParticulars; ///< of the reason, in words
    std::optional<NvErrorCode> mError;
    std::uint32_t mOriginalSize = 0; ///< bytes; 0 when it was not measured
    std::uint32_t mNewSize = 0;      ///< bytes

    std::string mOutputPath; ///< where what became of it stands, its own path or elsewhere; or empty
    std::string mBackupPath; ///< where the original is kept, of a file made smaller; or empty

    std::string mDamage; ///< which frame's data end early, run over or make no sense; empty: none
    std::uint32_t mFrameCount = 0;
    PvFrameLook mWorstLook; ///< of the displayed frame that changed most, when the file was made smaller

    /** Sets the status that goes with a reason, too. */
    void SetReason(MizerReason inReason, const std::string& inParticulars = {});

    /** The same for an error; code 3 is a cancel whatever it is about. */
    void Fail(const NvErrorCode& inError, MizerReason inAbout = MizerReason::km_Error);

    std::uint32_t GetSaved() const { return mOriginalSize - mNewSize; }
};

/** Why the file failed, was passed over, or stayed although a smaller one was found, or what is damaged in
 * it; empty when the status says it all. May hold any character that the particulars hold. */
std::string MizerOutcomeWords(const MizerFileResult& inResult);

/** The same without what the status says already. */
std::string MizerWhyWords(const MizerFileResult& inResult);

/** The outcome of a reason without particulars. */
std::string MizerReasonWords(MizerReason inReason);

/** An error in words for the person at the screen, lower case and without a closing stop, with the number
 *  that a report should quote: "not a GIF file (code 32)". */
std::string MizerErrorWords(const NvErrorCode& inError);

/** The same of any other exception. */
std::string MizerErrorWords(const std::exception& inException);

/** Which frame is damaged and how; empty when none is. */
std::string MizerDamageWords(const NvGIFDamage& inDamage);
