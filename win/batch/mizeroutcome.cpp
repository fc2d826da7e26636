#include "win/batch/mizeroutcome.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

struct Reason {
    MizerReason mReason;
    MizerStatus mStatus;
    const char* mWords; ///< the particulars take the place of "{}"
};

constexpr auto km_Reasons = std::to_array<Reason>({
    {MizerReason::km_Replaced, MizerStatus::km_Smaller, ""},
    {MizerReason::km_KeptAside, MizerStatus::km_Smaller,
     "its original is kept as {}, since the backup that was there may be of another picture"},
    {MizerReason::km_ReplacedDamaged, MizerStatus::km_Smaller, "{}"},
    {MizerReason::km_DamagedNotKept, MizerStatus::km_Unchanged,
     "left as it was: {}, and no backup would be kept"},
    {MizerReason::km_DamagedFrame, MizerStatus::km_Failed, "{} (code 28)"},
    {MizerReason::km_NothingSmaller, MizerStatus::km_Unchanged, ""},
    {MizerReason::km_DoneBefore, MizerStatus::km_Unchanged,
     "left as it was: an earlier run has finished with it"},
    {MizerReason::km_GainsTooLittle, MizerStatus::km_Unchanged, "left as it was: would save only {}"},
    {MizerReason::km_ChangedMeanwhile, MizerStatus::km_Unchanged,
     "left as it was: another program changed the file meanwhile"},
    {MizerReason::km_WouldDiffer, MizerStatus::km_Unchanged, "left as it was: {}"},
    {MizerReason::km_Backup, MizerStatus::km_Skipped, "skipped: a backup"},
    {MizerReason::km_NotNamedGIF, MizerStatus::km_Skipped, "skipped: its name does not end in GIF"},
    {MizerReason::km_NamedBefore, MizerStatus::km_Skipped, "skipped: the same file was named before"},
    {MizerReason::km_Empty, MizerStatus::km_Skipped, "skipped: empty"},
    {MizerReason::km_InUse, MizerStatus::km_Skipped, "skipped: another run is working on it"},
    {MizerReason::km_Done, MizerStatus::km_Skipped, "skipped: already done by an earlier run"},
    {MizerReason::km_UpToDate, MizerStatus::km_Skipped, "skipped: the output folder has it already"},
    {MizerReason::km_NoGIFs, MizerStatus::km_Failed, "no GIF file there (code 10)"},
    {MizerReason::km_Error, MizerStatus::km_Failed, "{}"},
    {MizerReason::km_NoBackup, MizerStatus::km_Failed, "no backup could be made: {}"},
    {MizerReason::km_NotDelivered, MizerStatus::km_Failed, "not written to the output folder: {}"},
    {MizerReason::km_WorkerEnded, MizerStatus::km_Failed, "the process that worked on it ended unexpectedly"},
    {MizerReason::km_Cancelled, MizerStatus::km_Cancelled, ""},
});

const Reason& Find(MizerReason inReason) {
    return *std::find_if(km_Reasons.begin(), km_Reasons.end(),
                         [&](const Reason& inEntry) { return inEntry.mReason == inReason; });
}

const char* WordsForCode(std::uint32_t inCode) {
    switch (inCode) {
    case NvErrorCode::km_OutOfMemory:
        return "needs more memory than allowed";
    case NvErrorCode::km_Cancelled:
        return "cancelled";
    case NvErrorCode::km_NoFileSpecified:
        return "no file named";
    case NvErrorCode::km_PermissionDenied:
        return "no permission to replace it: the file or its folder is read-only";
    case NvErrorCode::km_TooManyFiles:
        return "too many open files";
    case NvErrorCode::km_FileNotFound:
        return "no such file or folder";
    case NvErrorCode::km_FileAlreadyOpen:
        return "the file is open already";
    case NvErrorCode::km_WrongPermission:
        return "neither a file nor a folder";
    case NvErrorCode::km_OpenDenied:
        return "no permission to open it";
    case NvErrorCode::km_FileNotOpen:
        return "the file is not open";
    case NvErrorCode::km_CrossDevice:
        return "the new file would be on another disk";
    case NvErrorCode::km_EndOfFile:
        return "the file ends too early";
    case NvErrorCode::km_BadDescriptor:
        return "the file could not be closed";
    case NvErrorCode::km_BadParameter:
        return "a value is out of range";
    case NvErrorCode::km_DiskFull:
        return "no space left on the disk";
    case NvErrorCode::km_MissingData:
        return "a colour table or an image is missing";
    case NvErrorCode::km_MalformedGIF:
        return "damaged: not a well-formed GIF file";
    case NvErrorCode::km_OutOfRange:
        return "too large: files of 2 GiB and more are left alone";
    case NvErrorCode::km_FileExists:
        return "the file exists already";
    case NvErrorCode::km_NotGIF:
        return "not a GIF file";
    case NvErrorCode::km_UnknownGIFVersion:
        return "a GIF file of an unknown version";
    case NvErrorCode::km_StringResource:
        return "a text of the program is missing";
    case NvErrorCode::km_WrongFormatInfo:
        return "a frame's record is missing or of another format";
    case NvErrorCode::km_NotSupported:
        return "not supported";
    default:
        return "failed";
    }
}

} // namespace

void MizerFileResult::SetReason(MizerReason inReason, const std::string& inParticulars) {
    mReason = inReason;
    mStatus = Find(inReason).mStatus;
    mParticulars = inParticulars;
}

void MizerFileResult::Fail(const NvErrorCode& inError, MizerReason inAbout) {
    const bool isCancelled = inError.GetCode() == NvErrorCode::km_Cancelled;
    SetReason(isCancelled ? MizerReason::km_Cancelled : inAbout, MizerErrorWords(inError));
    mError = inError;
}

std::string MizerReasonWords(MizerReason inReason) {
    return Find(inReason).mWords;
}

std::string MizerDamageWords(const NvGIFDamage& inDamage) {
    const std::string frame = "frame " + std::to_string(inDamage.mFrame);
    switch (inDamage.mKind) {
    case NvDataDamage::km_EndsEarly:
        return frame + " ends early";
    case NvDataDamage::km_RunsOver:
        return frame + " holds too many pixels";
    case NvDataDamage::km_Undefined:
        return frame + " is damaged";
    default:
        return {};
    }
}

std::string MizerOutcomeWords(const MizerFileResult& inResult) {
    constexpr std::string_view particulars = "{}";
    std::string words = MizerReasonWords(inResult.mReason);
    if (const std::size_t at = words.find(particulars); at != std::string::npos)
        words.replace(at, particulars.size(), inResult.mParticulars);
    return words;
}

std::string MizerErrorWords(const NvErrorCode& inError) {
    if (inError.GetSystemError() == EBUSY)
        return "another program has it open (code " + std::to_string(inError.GetCode()) + ")";
    const bool onlySystemKnows =
        inError.GetCode() == NvErrorCode::km_Failure && inError.GetSystemError() != 0;
    const std::string words =
        onlySystemKnows ? std::strerror(inError.GetSystemError()) : WordsForCode(inError.GetCode());
    return words + " (code " + std::to_string(inError.GetCode()) + ")";
}

std::string MizerErrorWords(const std::exception& inException) {
    const std::string words = inException.what();
    return words.empty() ? "Unknown exception" : words;
}
