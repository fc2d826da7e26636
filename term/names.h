#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "term/listener.h"
#include "term/messages.h"
#include "term/options.h"
#include "win/filequeue.h"
#include "win/mizershell.h"

/** Queues what the names on the command line stand for; those that lead nowhere, or to a file named before,
 *  are told.
 *
 *  @param inQueue     FileQueue::AddName of the queue to fill
 *  @param inListener  hears of each name that cannot be queued; borrowed, or null */
void TermQueueNames(const std::vector<std::string>& inNames, TermMessages& ioMessages,
                    const std::function<FileQueue::Named(const char*)>& inQueue,
                    TermListener* inListener = nullptr);

/** Tells of files that are not worked on. A folder may hold a thousand of them: unless everything is to be
 *  told, only what was named itself deserves a line. */
class TermPassedOver {
public:
    /** @param ioMessages  borrowed */
    TermPassedOver(const TermSettings& inSettings, TermMessages& ioMessages);

    /** @param inWords  why, see TermOutcomeWords */
    void Tell(const std::string& inPath, const std::string& inWords);

private:
    TermMessages& mMessages;
    bool mVerbose;
    std::set<std::string> mTypedNames; // files that the user named one by one
};
