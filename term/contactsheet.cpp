#include "term/commands.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/file/nvfile.h"
#include "term/inputs/names.h"
#include "term/system/interrupt.h"
#include "win/batch/filequeue.h"
#include "win/batch/mizeroutcome.h"
#include "win/sheet/pvcontactsheet.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

namespace {

class StopOnInterrupt : public NvProgressIndicator {
public:
    bool Progress(std::uint32_t /*inDone*/, std::uint32_t /*inTotal*/) override {
        return TermIsInterrupted();
    }
};

bool IsEmptyFile(const char* inPath) {
    NvFile file(inPath);
    file.Open(NvFile::km_ReadPerm);
    return file.GetLength() == 0;
}

/** @return whether the file is on the sheet now; if not, the reason has been reported unless it needs none */
bool AddFile(const char* inPath, PvContactSheet& ioSheet, TermPassedOver& ioPassedOver,
             TermMessages& ioMessages) {
    try {
        if (MizerIsNamedBackup(inPath)) {
            ioPassedOver.Report(inPath, MizerReasonWords(MizerReason::km_Backup));
        } else if (!MizerIsNamedGIF(inPath)) {
            ioPassedOver.Report(inPath, MizerReasonWords(MizerReason::km_NotNamedGIF));
        } else if (IsEmptyFile(inPath)) {
            ioPassedOver.Report(inPath, MizerReasonWords(MizerReason::km_Empty));
        } else {
            ioSheet.AddFile(inPath);
            return true;
        }
    } catch (const NvErrorCode& error) {
        if (error.GetCode() == NvErrorCode::km_Cancelled)
            throw;
        ioMessages.FileError(inPath, MizerErrorWords(error));
    }
    return false;
}

std::string MakeRow(const std::string& inRow, const std::string& inColumn, const std::string& inFile) {
    std::array<char, 64> numbers{};
    std::snprintf(numbers.data(), numbers.size(), "%7s %7s  ", inRow.c_str(), inColumn.c_str());
    return numbers.data() + inFile + "\n";
}

void PrintPlaces(const std::vector<std::string>& inFiles, std::size_t inColumns, TermMessages& ioMessages) {
    std::string table = MakeRow("Row", "Column", "File");
    for (std::size_t i = 0; i < inFiles.size(); ++i)
        table += MakeRow(std::to_string(i / inColumns + 1), std::to_string(i % inColumns + 1),
                         TermPrintable(inFiles[i]));
    std::fwrite(table.data(), 1, table.size(), stdout);
    if (std::fflush(stdout) == 0)
        return;
    if (errno == EPIPE)
        TermEndOfClosedPipe();
    ioMessages.Error(std::string("standard output: ") + std::strerror(errno));
}

/** Not even an older sheet is replaced: it may be the only copy. */
void CheckAbsent(const char* inPath) {
    if (WnGetFileKind(inPath) != WnFileKind::km_Missing)
        NvThrow(NvErrorCode::km_FileExists);
}

/** Draws the queued files. The sheet's file is created first, so that a sheet that cannot be written is
 *  reported before the work. */
void Draw(const TermInputs& inInputs, const TermSettings& inSettings, TermMessages& ioMessages) {
    const char* const path = inSettings.mContactSheet.c_str();
    CheckAbsent(path);
    WnSafeFile file(path);
    StopOnInterrupt indicator;
    PvContactSheet sheet(inSettings.mOptimizer.mMemoryLimit, &indicator);
    TermPassedOver passedOver(inSettings, ioMessages);
    std::vector<std::string> files;
    for (const TermInput& input : inInputs.mFiles) {
        if (AddFile(input.mPath.c_str(), sheet, passedOver, ioMessages))
            files.push_back(input.mPath);
    }
    if (files.empty())
        return ioMessages.FileError(inSettings.mContactSheet, "not made: there is nothing to show on it");
    const WnScratchFile scratch;
    sheet.Write(scratch.GetPath());
    file.CopyFrom(scratch.GetPath());
    if (!file.CommitUnlessPresent())
        NvThrow(NvErrorCode::km_FileExists);
    if (inSettings.GetDetail() != TermDetail::km_Quiet)
        PrintPlaces(files, sheet.GetColumnCount(), ioMessages);
}

} // namespace

void TermDrawContactSheet(const TermSettings& inSettings, TermMessages& ioMessages) {
    ioMessages.SetQuiet(inSettings.GetDetail() == TermDetail::km_Quiet);
    TermCatchInterrupts();
    const TermInputs inputs = TermListInputs(inSettings, ioMessages);
    if (ioMessages.GetExit() == TermExit::km_Usage)
        return;
    try {
        Draw(inputs, inSettings, ioMessages);
    } catch (const NvErrorCode& error) {
        if (error.GetCode() == NvErrorCode::km_Cancelled)
            ioMessages.Error(PvSay(PvText::km_CodeCancelled), TermExit::km_Cancelled);
        else
            ioMessages.FileError(inSettings.mContactSheet, MizerErrorWords(error));
    }
}
