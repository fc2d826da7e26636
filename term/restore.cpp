#include "term/commands.h"

#include <chrono>
#include <string>
#include <vector>

#include "term/system/interrupt.h"
#include "term/system/print.h"
#include "win/batch/filequeue.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizeroutcome.h"
#include "win/batch/mizerpreferences.h"
#include "win/batch/mizerrestore.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsystem.h"

namespace {

class Restorer {
public:
    Restorer(const TermSettings& inSettings, TermMessages& ioMessages)
        : mSettings(inSettings),
          mMessages(ioMessages),
          mLog({&WnGetDataFolder, [&](const std::string& text, const char*) { ioMessages.Warning(text); }}) {
        WnPref prefs = MizerOpenPreferences();
        for (const auto& [name, value] : inSettings.mPreferences)
            prefs.Override(name.c_str(), value);
        mIsLogged = MizerSettings::Read(prefs).mLog;
    }

    void RestoreName(const std::string& inName) {
        try {
            const WnFileKind kind = WnGetFileKind(inName.c_str());
            if (kind == WnFileKind::km_Folder)
                RestoreFolder(inName);
            else if (const std::string picture = PictureOf(inName); !picture.empty())
                RestoreFile(picture);
            else if (kind != WnFileKind::km_Missing || HasBackup(inName))
                RestoreFile(inName);
            else
                RestorePattern(inName);
        } catch (const NvErrorCode& error) {
            mMessages.FileError(inName, MizerErrorWords(error));
        }
    }

private:
    /** The picture that a file of this name is the backup of, or nothing. */
    static std::string PictureOf(const std::string& inName) {
        std::string picture = inName.substr(0, inName.rfind('.'));
        return inName == MizerBackupName(picture) && MizerIsNamedGIF(picture.c_str()) ? picture : "";
    }

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
        bool hasAny = false;
        for (const std::string& name : WnListFiles(inFolder.c_str())) {
            const std::string picture = PictureOf(name);
            if (picture.empty())
                continue;
            hasAny = true;
            RestoreFile(inFolder + picture);
        }
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

    void RestoreFile(const std::string& inPath) {
        if (TermIsInterrupted())
            return;
        try {
            Tell(inPath, MizerRestore(inPath, mSettings.mOptimizer.mMemoryLimit));
        } catch (const NvErrorCode& error) {
            mMessages.FileError(inPath, "not restored: " + MizerErrorWords(error));
        }
    }

    void Tell(const std::string& inPath, MizerRestored inWhat) {
        switch (inWhat) {
        case MizerRestored::km_NoBackup:
            return mMessages.FileError(inPath, "no backup: there is no " +
                                                   TermPrintable(MizerBackupName(inPath)) + " (code 10)");
        case MizerRestored::km_OtherImage:
            return mMessages.FileError(inPath, "not restored: it is another picture than its backup, of "
                                               "another size or number of frames; move it away first");
        case MizerRestored::km_InUse:
            return mMessages.FileError(inPath, "not restored: another run is working on it");
        case MizerRestored::km_Restored:
            break;
        }
        const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
        if (mIsLogged)
            mLog.WriteLogEntry(MizerRestoredEntry(now, inPath.c_str()));
        if (mSettings.mDetail != TermDetail::km_Quiet)
            TermPrint("restored  " + TermPrintable(inPath) + "\n", mMessages);
    }

    const TermSettings& mSettings;
    TermMessages& mMessages;
    MizerLog mLog;
    bool mIsLogged = false;
};

} // namespace

void TermRestore(const TermSettings& inSettings, TermMessages& ioMessages) {
    ioMessages.SetQuiet(inSettings.mDetail == TermDetail::km_Quiet);
    TermCatchInterrupts();
    Restorer restorer(inSettings, ioMessages);
    for (const std::string& name : inSettings.mNames)
        restorer.RestoreName(name);
    if (TermIsInterrupted())
        ioMessages.Error("cancelled", TermExit::km_Cancelled);
}
