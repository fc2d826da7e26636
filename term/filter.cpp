#include "term/commands.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "term/batchrun.h"
#include "term/system/interrupt.h"
#include "term/system/standardstreams.h"
#include "win/batch/mizeroutcome.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

namespace {

/** @return 0, else the errno of what failed; with inFrom at its end in the first case */
int CopyStream(std::FILE* inFrom, std::FILE* inTo) {
    std::array<char, 64 * 1024> buffer{};
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), inFrom)) {
        if (TermIsInterrupted())
            return EINTR;
        if (std::fwrite(buffer.data(), 1, size, inTo) != size)
            return errno;
    }
    return std::ferror(inFrom) || std::fflush(inTo) != 0 ? errno : 0;
}

/** The same with a file on one side. */
int CopyFile(const char* inPath, const char* inMode, std::FILE* inStream) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(inPath, inMode), &std::fclose);
    if (!file)
        return errno;
    return *inMode == 'r' ? CopyStream(file.get(), inStream) : CopyStream(inStream, file.get());
}

/** @return 0, else the errno of what kept the picture from standard output */
int Filter(const TermSettings& inSettings, TermMessages& ioMessages) {
    const WnPrivateFolder folder;
    const std::string picture = folder.MakePath("PICTURE.GIF");
    const int error = CopyFile(picture.c_str(), "wb", stdin);
    TermCatchInterrupts();
    if (TermIsInterrupted())
        return EINTR;
    if (error != 0) {
        const char* const place = std::ferror(stdin) ? "standard input: " : "temporary folder: ";
        ioMessages.Error(place + std::string(std::strerror(error)));
        return 0;
    }
    if (const auto state = WnGetFileState(picture.c_str()); state && state->mSize == 0) {
        ioMessages.Error("standard input: there is nothing in it");
        return 0;
    }
    TermInputs inputs;
    inputs.mFiles = {{picture, "-"}};
    inputs.mQueue = std::make_unique<FileQueue>();
    inputs.mQueue->AddFile(picture.c_str());
    TermOutcomes outcomes(inSettings);
    if (!outcomes.Begin(ioMessages))
        return 0;
    TermProcessInputs(inputs, inSettings, ioMessages, outcomes);
    const bool isCancelled = ioMessages.GetExit() == TermExit::km_Cancelled;
    return inSettings.mIsDryRun || isCancelled ? 0 : CopyFile(picture.c_str(), "rb", stdout);
}

} // namespace

void TermRunFilter(const TermSettings& inSettings, TermMessages& ioMessages) {
    ioMessages.SetQuiet(inSettings.GetDetail() == TermDetail::km_Quiet);
    if (TermIsTerminal(stdout) && !inSettings.mIsDryRun)
        return ioMessages.Error("'-' writes a picture to standard output: send it to a file or a program",
                                TermExit::km_Usage);
    if (TermIsTerminal(stdin))
        return ioMessages.Error("'-' reads a picture from standard input: give it a file or a program",
                                TermExit::km_Usage);
    TermCarryBytes();
    std::ungetc(std::getc(stdin), stdin); // nothing is begun before the first byte, so Ctrl-C just ends
    TermCatchInterrupts(true);
    try {
        const int error = Filter(inSettings, ioMessages);
        if (error == EPIPE)
            TermEndOfClosedPipe();
        else if (error == EINTR)
            ioMessages.Error(PvSay(PvText::km_CodeCancelled), TermExit::km_Cancelled);
        else if (error != 0)
            ioMessages.Error(std::string("standard output: ") + std::strerror(error));
    } catch (const NvErrorCode& error) {
        ioMessages.Error("nothing can be written to the temporary folder: " + MizerErrorWords(error));
    }
}
