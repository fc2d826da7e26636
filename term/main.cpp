// parvigif: makes GIF files smaller in place, from the command line.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "term/batchrun.h"
#include "term/contactsheet.h"
#include "term/help.h"
#include "term/messages.h"
#include "term/options.h"

namespace {

void Print(const std::string& inText, TermMessages& ioMessages) {
    const bool isWritten = std::fwrite(inText.data(), 1, inText.size(), stdout) == inText.size();
    if (!isWritten || std::fflush(stdout) != 0)
        ioMessages.Error(std::string("standard output: ") + std::strerror(errno));
}

void Run(const TermSettings& inSettings, TermMessages& ioMessages) {
    switch (inSettings.mTask) {
    case TermTask::km_Process:
        return inSettings.mContactSheet.empty() ? TermRunBatch(inSettings, ioMessages)
                                                : TermDrawContactSheet(inSettings, ioMessages);
    case TermTask::km_BriefHelp:
        return Print(TermBriefHelp(), ioMessages);
    case TermTask::km_FullHelp:
        return Print(TermFullHelp(), ioMessages);
    case TermTask::km_Version:
        return Print(TermVersion(), ioMessages);
    }
}

} // namespace

int main(int inCount, char** inArguments) {
    TermMessages messages;
    try {
        TermSettings settings;
        std::string error;
        if (TermParseArguments({inArguments + 1, inArguments + inCount}, settings, error))
            Run(settings, messages);
        else
            messages.Error(TermPrintable(error) + " (see 'parvigif --help')", TermExit::km_Usage);
    } catch (const std::bad_alloc&) {
        messages.Error("Out of Availible Memory");
    }
    return static_cast<int>(messages.GetExit());
}
