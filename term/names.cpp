#include "term/names.h"

#include "win/errorwords.h"

namespace {

void TellFailure(const std::string& inName, const NvErrorCode& inError, const std::string& inWords,
                 TermMessages& ioMessages, TermListener* inListener) {
    ioMessages.FileError(inName, inWords);
    if (!inListener)
        return;
    MizerFileResult result;
    result.mPath = inName;
    result.mStatus = MizerStatus::km_Failed;
    result.mError = inError;
    inListener->FileDone(result, inWords);
}

void QueueName(const std::string& inName, TermMessages& ioMessages,
               const std::function<FileQueue::Named(const char*)>& inQueue, TermListener* inListener) {
    try {
        switch (inQueue(inName.c_str())) {
        case FileQueue::Named::km_Queued:
            break;
        case FileQueue::Named::km_AlreadyQueued:
            ioMessages.FileNote(inName, "skipped: the same file was named before");
            break;
        case FileQueue::Named::km_NoGIFs:
            TellFailure(inName, NvErrorCode(NvErrorCode::km_FileNotFound, __FILE__, __LINE__),
                        "no GIF file there (code 10)", ioMessages, inListener);
            break;
        }
    } catch (const NvErrorCode& error) {
        TellFailure(inName, error, MizerErrorWords(error), ioMessages, inListener);
    }
}

} // namespace

void TermQueueNames(const std::vector<std::string>& inNames, TermMessages& ioMessages,
                    const std::function<FileQueue::Named(const char*)>& inQueue, TermListener* inListener) {
    for (const std::string& name : inNames)
        QueueName(name, ioMessages, inQueue, inListener);
}

TermPassedOver::TermPassedOver(const TermSettings& inSettings, TermMessages& ioMessages)
    : mMessages(ioMessages),
      mVerbose(inSettings.mDetail == TermDetail::km_Verbose),
      mTypedNames(inSettings.mNames.begin(), inSettings.mNames.end()) {}

void TermPassedOver::Tell(const std::string& inPath, const std::string& inWords) {
    if (mVerbose || mTypedNames.contains(inPath))
        mMessages.FileNote(inPath, inWords);
}
