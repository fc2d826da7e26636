#include "win/batch/mizerrestore.h"

#include <cerrno>
#include <new>
#include <optional>
#include <vector>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "win/batch/mizerbackups.h"
#include "wnatom/wnfileclaim.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

/** What distinguishes pictures without a look at their colours. */
struct Shape {
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    std::uint32_t mFrames = 0;
    bool operator==(const Shape&) const = default;
};

Shape GetShape(const NvGIFFrameReader& inReader) {
    return {inReader.GetScreenWidth(), inReader.GetScreenHeight(), inReader.GetFrameCount()};
}

/** @throws NvErrorCode  2, 18, 28, 32, 33 when the file is no sound GIF */
Shape ReadEveryFrame(const char* inPath, std::uint64_t inMemoryLimit) {
    try {
        NvGIFFrameReader reader(inPath, WnGetUsualMemoryLimit());
        if (reader.EstimatePlayMemory() > (inMemoryLimit != 0 ? inMemoryLimit : WnGetUsualMemoryLimit()))
            NvThrow(NvErrorCode::km_OutOfMemory);
        for (std::uint32_t i = 0; i < reader.GetFrameCount(); ++i)
            reader.ReadFrame(i);
        return GetShape(reader);
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

/** A damaged picture holds nothing worth protecting, so any backup may replace it. */
bool IsOtherImage(const char* inPath, const Shape& inShape) {
    try {
        return GetShape(NvGIFFrameReader(inPath, WnGetUsualMemoryLimit())) != inShape;
    } catch (const NvErrorCode&) {
        return false;
    }
}

/** Of several backups, the picture's own; else the last of which anything is known to have been made; else
 * the first, which is the oldest. */
std::string ChooseBackup(const std::vector<std::string>& inBackups, const std::optional<MizerContent>& inHeld,
                         const MizerBackups& inKeeper) {
    if (std::string own = inHeld ? inKeeper.FindOwn(inBackups, *inHeld) : ""; !own.empty())
        return own;
    for (auto backup = inBackups.rbegin(); backup != inBackups.rend(); ++backup)
        if (WnGetFileKind(backup->c_str()) == WnFileKind::km_RegularFile &&
            inKeeper.GetOrigins().IsOriginal(MizerReadContent(backup->c_str())))
            return *backup;
    return inBackups.front();
}

/** The picture that is to be replaced. */
struct Present {
    WnFileState mState;
    MizerContent mContent;
};

std::optional<Present> LookAtPicture(const std::string& inPath) {
    const WnFileKind kind = WnGetFileKind(inPath.c_str());
    if (kind == WnFileKind::km_Missing)
        return std::nullopt;
    if (kind != WnFileKind::km_RegularFile)
        NvThrow(NvErrorCode::km_WrongPermission);
    WnCheckReplaceable(inPath.c_str());
    const auto state = WnGetFileState(inPath.c_str());
    if (!state)
        NvThrow(NvErrorCode::km_FileNotFound);
    return Present{*state, MizerReadContent(inPath.c_str())};
}

/** Whether the picture can be recovered after a backup has replaced it. */
bool IsKeptOtherwise(const MizerContent& inPicture, const MizerContent& inBackup,
                     const MizerOrigins& inOrigins) {
    return inPicture == inBackup || inPicture.mSize == 0 ||
           inOrigins.FindWork(inPicture, inBackup) != MizerOrigins::Work::km_Unknown;
}

/** @return false when either is not what it was */
bool Place(const std::string& inPath, const std::string& inBackup, const MizerContent& inContent,
           const std::optional<Present>& inPresent) {
    WnSafeFile file(inPath.c_str(), inPresent ? nullptr : inBackup.c_str());
    file.CopyFrom(inBackup.c_str());
    file.KeepTimesOf(inBackup.c_str());
    file.Finish();
    if (MizerReadContent(file.GetTemporaryPath()) != inContent)
        return false;
    return inPresent ? file.CommitOver(inPresent->mState).has_value() : file.CommitUnlessPresent();
}

} // namespace

MizerRestoration MizerRestore(const std::string& inPath, const MizerRestoreOptions& inOptions,
                              MizerBackups& ioBackups) {
    const WnFileClaim claim(WnGetDataFolder(), inPath.c_str());
    if (!claim.IsMine())
        return {MizerRestored::km_InUse, {}, {}};
    if (!inOptions.mIsDryRun)
        ioBackups.RemoveLeftoversBeside(inPath.c_str());
    const std::vector<std::string> backups = MizerFindBackups(inPath);
    if (backups.empty())
        return {MizerRestored::km_NoBackup, {}, {}};
    const std::optional<Present> present = LookAtPicture(inPath);
    MizerRestoration restoration;
    std::string& backup = restoration.mBackup;
    backup = inOptions.mBackup;
    if (backup.empty())
        backup = ChooseBackup(backups, present ? std::optional(present->mContent) : std::nullopt, ioBackups);
    if (WnGetFileKind(backup.c_str()) != WnFileKind::km_RegularFile)
        NvThrow(NvErrorCode::km_WrongPermission);
    const MizerContent content = MizerReadContent(backup.c_str());
    const Shape shape = ReadEveryFrame(backup.c_str(), inOptions.mMemoryLimit);
    restoration.mWhat = MizerRestored::km_OtherImage;
    if (present && IsOtherImage(inPath.c_str(), shape))
        return restoration;
    restoration.mWhat = MizerRestored::km_Restored;
    const bool isToBeKept = present && !IsKeptOtherwise(present->mContent, content, ioBackups.GetOrigins());
    if (inOptions.mIsDryRun) {
        if (isToBeKept)
            restoration.mKept = MizerBackupName(inPath, 2);
        return restoration;
    }
    restoration.mWhat = MizerRestored::km_Changed;
    if (isToBeKept) {
        const auto kept = ioBackups.BackupFile(inPath.c_str(), present->mState);
        if (!kept)
            return restoration;
        restoration.mKept = kept->mPath;
    }
    if (Place(inPath, backup, content, present))
        restoration.mWhat = MizerRestored::km_Restored;
    return restoration;
}
