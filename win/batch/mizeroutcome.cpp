#include "win/batch/mizeroutcome.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "win/texts/pvtexts.h"

namespace {

struct Reason {
    MizerReason mReason;
    MizerStatus mStatus;
    PvText mWords;                   ///< take the particulars; none: those are all there is to say
    PvText mFrame = PvText::km_None; ///< takes the words
    std::uint32_t mCode = 0;         ///< quoted after them
};

constexpr auto km_Reasons = std::to_array<Reason>({
    {MizerReason::km_Replaced, MizerStatus::km_Smaller, PvText::km_None},
    {MizerReason::km_KeptAside, MizerStatus::km_Smaller, PvText::km_KeptAside},
    {MizerReason::km_ReplacedDamaged, MizerStatus::km_Smaller, PvText::km_None},
    {MizerReason::km_DamagedNotKept, MizerStatus::km_Unchanged, PvText::km_DamagedNotKept,
     PvText::km_LeftAsItWas},
    {MizerReason::km_DamagedFrame, MizerStatus::km_Failed, PvText::km_None, PvText::km_None,
     NvErrorCode::km_MalformedGIF},
    {MizerReason::km_TooMuchWork, MizerStatus::km_Failed, PvText::km_TooMuchWork},
    {MizerReason::km_NothingSmaller, MizerStatus::km_Unchanged, PvText::km_None},
    {MizerReason::km_DoneBefore, MizerStatus::km_Unchanged, PvText::km_WasFinishedBefore,
     PvText::km_LeftAsItWas},
    {MizerReason::km_GainsTooLittle, MizerStatus::km_Unchanged, PvText::km_GainsTooLittle,
     PvText::km_LeftAsItWas},
    {MizerReason::km_ChangedMeanwhile, MizerStatus::km_Unchanged, PvText::km_ChangedMeanwhile,
     PvText::km_LeftAsItWas},
    {MizerReason::km_WouldDiffer, MizerStatus::km_Unchanged, PvText::km_None, PvText::km_LeftAsItWas},
    {MizerReason::km_Backup, MizerStatus::km_Skipped, PvText::km_IsBackup, PvText::km_Skipped},
    {MizerReason::km_NotNamedGIF, MizerStatus::km_Skipped, PvText::km_IsNotNamedGIF, PvText::km_Skipped},
    {MizerReason::km_NamedBefore, MizerStatus::km_Skipped, PvText::km_WasNamedBefore, PvText::km_Skipped},
    {MizerReason::km_Empty, MizerStatus::km_Skipped, PvText::km_IsEmpty, PvText::km_Skipped},
    {MizerReason::km_InUse, MizerStatus::km_Skipped, PvText::km_IsInUse, PvText::km_Skipped},
    {MizerReason::km_Done, MizerStatus::km_Skipped, PvText::km_WasDone, PvText::km_Skipped},
    {MizerReason::km_UpToDate, MizerStatus::km_Skipped, PvText::km_IsUpToDate, PvText::km_Skipped},
    {MizerReason::km_NoGIFs, MizerStatus::km_Failed, PvText::km_NoGIFs, PvText::km_None,
     NvErrorCode::km_FileNotFound},
    {MizerReason::km_Error, MizerStatus::km_Failed, PvText::km_None},
    {MizerReason::km_NoBackup, MizerStatus::km_Failed, PvText::km_NoBackup},
    {MizerReason::km_NotDelivered, MizerStatus::km_Failed, PvText::km_NotDelivered},
    {MizerReason::km_WorkerEnded, MizerStatus::km_Failed, PvText::km_WorkerEnded},
    {MizerReason::km_Cancelled, MizerStatus::km_Cancelled, PvText::km_None},
});

const Reason& Find(MizerReason inReason) {
    return *std::find_if(km_Reasons.begin(), km_Reasons.end(),
                         [&](const Reason& inEntry) { return inEntry.mReason == inReason; });
}

std::string WithCode(const std::string& inWords, std::uint32_t inCode) {
    return PvSay(PvText::km_WithCode, {inWords, std::to_string(inCode)});
}

std::string WordsForCode(std::uint32_t inCode) {
    constexpr std::uint32_t lastWithWords = NvErrorCode::km_WrongFormatInfo;
    try {
        if (inCode <= lastWithWords)
            return PvSay(static_cast<PvText>(static_cast<std::uint32_t>(PvText::km_CodeOther) + inCode));
    } catch (const NvErrorCode& error) {
        if (error.GetCode() != NvErrorCode::km_StringResource)
            throw;
    }
    return PvSay(PvText::km_CodeOther);
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
    MizerFileResult result;
    result.SetReason(inReason);
    return MizerOutcomeWords(result);
}

std::string MizerDamageWords(const NvGIFDamage& inDamage) {
    const auto say = [&](PvText inText) { return PvSay(inText, {std::to_string(inDamage.mFrame)}); };
    switch (inDamage.mKind) {
    case NvDataDamage::km_EndsEarly:
        return say(PvText::km_EndsEarly);
    case NvDataDamage::km_RunsOver:
        return say(PvText::km_RunsOver);
    case NvDataDamage::km_Undefined:
        return say(PvText::km_Undefined);
    default:
        return {};
    }
}

std::string MizerOutcomeWords(const MizerFileResult& inResult) {
    const PvText frame = Find(inResult.mReason).mFrame;
    const std::string why = MizerWhyWords(inResult);
    return frame == PvText::km_None ? why : PvSay(frame, {why});
}

std::string MizerWhyWords(const MizerFileResult& inResult) {
    const Reason& reason = Find(inResult.mReason);
    if (reason.mStatus == MizerStatus::km_Cancelled)
        return {}; // that says it all
    const std::string words = reason.mWords == PvText::km_None
                                  ? inResult.mParticulars
                                  : PvSay(reason.mWords, {inResult.mParticulars});
    return reason.mCode == 0 ? words : WithCode(words, reason.mCode);
}

std::string MizerErrorWords(const NvErrorCode& inError) {
    const std::int32_t systemError = inError.GetSystemError();
    if (systemError == EBUSY)
        return WithCode(PvSay(PvText::km_OpenElsewhere), inError.GetCode());
    const bool onlySystemKnows = inError.GetCode() == NvErrorCode::km_Failure && systemError != 0;
    return WithCode(onlySystemKnows ? std::strerror(systemError) : WordsForCode(inError.GetCode()),
                    inError.GetCode());
}

std::string MizerErrorWords(const std::exception& inException) {
    const std::string words = inException.what();
    return words.empty() ? PvSay(PvText::km_UnknownException) : words;
}
