#include "term/commands.h"
#include "term/preferences.h"

#include <chrono>
#include <set>
#include <string>

#include "term/results/json.h"
#include "term/system/interrupt.h"
#include "term/system/print.h"
#include "win/batch/filequeue.h"
#include "win/batch/mizerbackups.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizeroutcome.h"
#include "win/batch/mizerpreferences.h"
#include "win/batch/mizerrestore.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsystem.h"

namespace {

std::string NotRestored(const std::string& inWhy) {
    return "not restored: " + inWhy;
}

class Restorer {
public:
    Restorer(const TermSettings& inSettings, TermMessages& ioMessages)
        : mSettings(inSettings),
          mMessages(ioMessages),
          mLog({&WnGetDataFolder, [&](const std::string& text, const char*) { ioMessages.Warning(text); }}) {
        mIsLogged =
            MizerSettings::Read(TermOpenPreferences(inSettings, ioMessages)).mLog && !inSettings.mIsDryRun;
    }

    void RestoreName(const std::string& inName) {
        try {
            const WnFileKind kind = WnGetFileKind(inName.c_str());
            if (kind == WnFileKind::km_Folder)
                RestoreFolder(inName);
            else if (const std::string picture = MizerPictureOfBackup(inName); !picture.empty())
                RestoreFile(picture, inName);
            else if (kind != WnFileKind::km_Missing || HasBackup(inName))
                RestoreFile(inName);
            else
                RestorePattern(inName);
        } catch (const NvErrorCode& error) {
            mMessages.FileError(inName, MizerErrorWords(error));
        }
    }

private:
    static bool HasBackup(const std::string& inPath) {
        return WnGetFileKind(MizerBackupName(inPath).c_str()) != WnFileKind::km_Missing;
    }

    void RestoreFolder(const std::string& inFolder) {
        const std::string folder = WnIsSeparator(inFolder.back()) ? inFolder : inFolder + WnGetSeparator();
        if (!RestoreTree(folder))
            mMessages.FileError(folder, "no backup there (code 10)");
    }

    /** Also pictures that are missing, of which the backup is all that is left. @return whether there were
     *  any */
    bool RestoreTree(const std::string& inFolder) {
        std::set<std::string> pictures; // one may have several backups
        for (const std::string& name : WnListFiles(inFolder.c_str())) {
            if (const std::string picture = MizerPictureOfBackup(name); !picture.empty())
                pictures.insert(picture);
        }
        bool hasAny = !pictures.empty();
        for (const std::string& picture : pictures)
            RestoreFile(inFolder + picture);
        if (!mSettings.mIsRecursive)
            return hasAny;
        for (const std::string& name : WnListFolders(inFolder.c_str())) {
            const std::string folder = inFolder + name + WnGetSeparator();
            try {
                hasAny = RestoreTree(folder) || hasAny;
            } catch (const NvErrorCode& error) {
                mMessages.FileError(folder, MizerErrorWords(error));
            }
        }
        return hasAny;
    }

    void RestorePattern(const std::string& inPattern) {
        FileQueue queue;
        queue.AddName(inPattern.c_str());
        bool hasAny = false;
        while (!queue.IsEmpty()) {
            const std::string path = queue.TakeFirst().get();
            if (!MizerIsNamedGIF(path.c_str()) || !HasBackup(path))
                continue;
            hasAny = true;
            RestoreFile(path);
        }
        if (!hasAny)
            mMessages.FileError(inPattern, "no backup there (code 10)");
    }

    /** @param inBackup  the one to take; empty: which is left to the rules */
    void RestoreFile(const std::string& inPath, const std::string& inBackup = {}) {
        if (TermIsInterrupted())
            return;
        try {
            const MizerRestoreOptions options = {inBackup, mSettings.mOptimizer.mMemoryLimit,
                                                 mSettings.mIsDryRun};
            Report(inPath, MizerRestore(inPath, options, mBackups));
        } catch (const NvErrorCode& error) {
            Refuse(inPath, {}, NotRestored(MizerErrorWords(error)), error.GetCode());
        }
    }

    void Report(const std::string& inPath, const MizerRestoration& inDone) {
        switch (inDone.mWhat) {
        case MizerRestored::km_NoBackup:
            return Refuse(inPath, inDone, "no backup: there is no " + MizerBackupName(inPath) + " (code 10)",
                          NvErrorCode::km_FileNotFound);
        case MizerRestored::km_OtherImage:
            return Refuse(inPath, inDone,
                          NotRestored("it is another picture than its backup, of another size or number of "
                                      "frames; move it away first"));
        case MizerRestored::km_InUse:
            return Refuse(inPath, inDone, NotRestored(PvSay(PvText::km_IsInUse)));
        case MizerRestored::km_Changed:
            return Refuse(inPath, inDone, NotRestored(PvSay(PvText::km_ChangedMeanwhile)));
        case MizerRestored::km_Restored:
            break;
        }
        const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
        if (mIsLogged)
            mLog.WriteLogEntry(MizerRestoredEntry(now, WnGetFullPath(inPath).c_str()));
        if (mSettings.mFormat == TermFormat::km_Json)
            TermPrint(TermJsonRestored({inPath, inDone.mBackup, inDone.mKept, {}, 0, mSettings.mIsDryRun}),
                      mMessages);
        else if (mSettings.GetDetail() != TermDetail::km_Quiet)
            TermPrint((mSettings.mIsDryRun ? "would restore  " : "restored  ") + TermPrintable(inPath) + "\n",
                      mMessages);
        if (!inDone.mKept.empty())
            mMessages.FileNote(inPath, std::string("may have been changed since it was made smaller: ") +
                                           (mSettings.mIsDryRun ? "would be kept as " : "kept as ") +
                                           TermPrintable(inDone.mKept));
    }

    void Refuse(const std::string& inPath, const MizerRestoration& inDone, const std::string& inWords,
                std::uint32_t inCode = 0) {
        if (mSettings.mFormat == TermFormat::km_Json)
            TermPrint(TermJsonRestored({inPath, inDone.mBackup, {}, inWords, inCode, mSettings.mIsDryRun}),
                      mMessages);
        mMessages.FileError(inPath, TermPrintable(inWords));
    }

    const TermSettings& mSettings;
    TermMessages& mMessages;
    MizerLog mLog;
    MizerBackups mBackups{{&WnGetDataFolder, nullptr}};
    bool mIsLogged = false;
};

} // namespace

void TermRestore(const TermSettings& inSettings, TermMessages& ioMessages) {
    ioMessages.SetQuiet(inSettings.GetDetail() == TermDetail::km_Quiet);
    TermCatchInterrupts();
    if (inSettings.mFormat == TermFormat::km_Json)
        TermPrint(TermJsonRun(TermModeName(inSettings)), ioMessages);
    Restorer restorer(inSettings, ioMessages);
    for (const std::string& name : inSettings.mNames)
        restorer.RestoreName(name);
    if (TermIsInterrupted())
        ioMessages.Error(PvSay(PvText::km_CodeCancelled), TermExit::km_Cancelled);
}
