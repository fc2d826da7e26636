#include "win/batch/mizerbackups.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "win/batch/mizerpreferences.h"
#include "win/batch/mizerrestore.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

std::string GetFolderOf(const std::string& inPath) {
    const auto separator = std::find_if(inPath.rbegin(), inPath.rend(), WnIsSeparator);
    return separator == inPath.rend() ? std::string(".") : std::string(inPath.begin(), separator.base());
}

} // namespace

std::string MizerBackups::BackupFile(const char* inPath, const MizerSettings& inSettings) const {
    if (!inSettings.mBackup)
        return {};
    std::string backup = MizerBackupName(inPath);
    const WnFileKind present = WnGetFileKind(backup.c_str());
    if (present != WnFileKind::km_Missing && present != WnFileKind::km_RegularFile)
        NvThrowWithSystemError(NvErrorCode::km_Failure, EEXIST);
    if (present == WnFileKind::km_RegularFile && !inSettings.mOverwriteBackups)
        return backup; // the first backup holds the oldest original

    WnSafeFile file(backup.c_str(), inPath);
    file.CopyFrom(inPath);
    if (inSettings.mOverwriteBackups)
        file.Commit();
    else
        file.CommitUnlessPresent();
    return backup;
}

void MizerBackups::RemoveLeftoversBeside(const char* inPath) {
    std::string folder = GetFolderOf(inPath);
    if (folder == mCleanedFolder)
        return;
    WnRemoveLeftovers(folder.c_str());
    mCleanedFolder = std::move(folder);
}
