#include "term/names.h"

#include "win/errorwords.h"

namespace {

void QueueName(const std::string& inName, TermMessages& ioMessages,
               const std::function<FileQueue::Named(const char*)>& inQueue) {
    try {
        switch (inQueue(inName.c_str())) {
        case FileQueue::Named::km_Queued:
            break;
        case FileQueue::Named::km_AlreadyQueued:
            ioMessages.FileNote(inName, "skipped: the same file was named before");
            break;
        case FileQueue::Named::km_NoGIFs:
            ioMessages.FileError(inName, "no GIF file there (code 10)");
            break;
        }
    } catch (const NvErrorCode& error) {
        ioMessages.FileError(inName, MizerErrorWords(error));
    }
}

} // namespace

void TermQueueNames(const std::vector<std::string>& inNames, TermMessages& ioMessages,
                    const std::function<FileQueue::Named(const char*)>& inQueue) {
    for (const std::string& name : inNames)
        QueueName(name, ioMessages, inQueue);
}

TermPassedOver::TermPassedOver(const TermSettings& inSettings, TermMessages& ioMessages)
    : mMessages(ioMessages),
      mVerbose(inSettings.mDetail == TermDetail::km_Verbose),
      mTypedNames(inSettings.mNames.begin(), inSettings.mNames.end()) {}

void TermPassedOver::Tell(const std::string& inPath, MizerSkip inReason) {
    if (!mVerbose && !mTypedNames.contains(inPath))
        return;
    const char* reason = "skipped: its name does not end in GIF";
    if (inReason == MizerSkip::km_Backup)
        reason = "skipped: a backup";
    else if (inReason == MizerSkip::km_Empty)
        reason = "skipped: empty";
    mMessages.FileNote(inPath, reason);
}
