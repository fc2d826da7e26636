#include "win/batch/mizerbackups.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string_view>

#include "nvcode2/base/nverrorcode.h"
#include "win/batch/filequeue.h"
#include "wnatom/wnsafefile.h"

namespace {

constexpr std::string_view km_Extension = ".BAK";

std::string GetFolderOf(const std::string& inPath) {
    const auto separator = std::find_if(inPath.rbegin(), inPath.rend(), WnIsSeparator);
    return separator == inPath.rend() ? std::string(".") : std::string(inPath.begin(), separator.base());
}

} // namespace

std::string MizerBackupName(const std::string& inPath, unsigned inNumber) {
    return inPath + (inNumber == 1 ? "" : "." + std::to_string(inNumber)) + std::string(km_Extension);
}

std::string MizerPictureOfBackup(const std::string& inName) {
    if (!inName.ends_with(km_Extension))
        return {};
    const std::string picture = inName.substr(0, inName.size() - km_Extension.size());
    if (MizerIsNamedGIF(picture.c_str()))
        return picture;
    const std::size_t dot = picture.rfind('.');
    unsigned number = 0;
    if (dot == std::string::npos ||
        std::from_chars(picture.data() + dot + 1, picture.data() + picture.size(), number).ec !=
            std::errc() ||
        number < 2)
        return {};
    const std::string numbered = picture.substr(0, dot);
    return MizerIsNamedGIF(numbered.c_str()) && MizerBackupName(numbered, number) == inName ? numbered : "";
}

std::vector<std::string> MizerFindBackups(const std::string& inPath) {
    constexpr unsigned gap = 8; // some may have been removed
    std::vector<std::string> found;
    unsigned missing = 0;
    for (unsigned number = 1; missing <= gap; ++number) {
        const std::string backup = MizerBackupName(inPath, number);
        if (WnGetFileKind(backup.c_str()) == WnFileKind::km_Missing) {
            ++missing;
            continue;
        }
        missing = 0;
        found.push_back(backup);
    }
    return found;
}

std::string MizerBackups::FindOwn(const std::vector<std::string>& inBackups,
                                  const MizerContent& inPicture) const {
    for (auto backup = inBackups.rbegin(); backup != inBackups.rend(); ++backup) {
        if (WnGetFileKind(backup->c_str()) != WnFileKind::km_RegularFile)
            continue;
        const MizerContent content = MizerReadContent(backup->c_str());
        if (content == inPicture || mOrigins.FindWork(inPicture, content) != MizerOrigins::Work::km_Unknown)
            return *backup;
    }
    return {};
}

/** @param outHeld  what it holds, when it is the picture's own */
MizerBackups::Place MizerBackups::Judge(const std::string& inBackup, unsigned inNumber,
                                        const WnFileState& inState, const MizerContent& inContent,
                                        bool inOverwrites, MizerContent& outHeld) const {
    const WnFileKind kind = WnGetFileKind(inBackup.c_str());
    if (kind == WnFileKind::km_Missing)
        return Place::km_Free;
    if (kind != WnFileKind::km_RegularFile) {
        if (inNumber == 1)
            NvThrowWithSystemError(NvErrorCode::km_Failure, EEXIST);
        return Place::km_Taken;
    }
    if (WnGetFileIdentity(inBackup.c_str()) == inState.mIdentity)
        return Place::km_Taken; // the picture itself under another name
    const bool isReplaceable = inOverwrites && inNumber == 1 && mOrigins.CanAdd();
    try {
        outHeld = MizerReadContent(inBackup.c_str());
    } catch (const NvErrorCode&) {
        return isReplaceable ? Place::km_Replaceable : Place::km_Taken;
    }
    if (outHeld == inContent)
        return Place::km_Own;
    switch (mOrigins.FindWork(inContent, outHeld)) {
    case MizerOrigins::Work::km_Begun:
        return Place::km_Own;
    case MizerOrigins::Work::km_Done:
        return inOverwrites ? Place::km_Replaceable : Place::km_Own;
    case MizerOrigins::Work::km_Unknown:
        break;
    }
    return isReplaceable ? Place::km_Replaceable : Place::km_Taken;
}

std::optional<MizerBackups::Kept> MizerBackups::BackupFile(const char* inPath, const WnFileState& inState,
                                                           bool inOverwrites) const {
    Kept kept;
    kept.mContent = MizerReadContent(inPath);
    if (WnGetFileState(inPath) != inState)
        return std::nullopt;
    for (unsigned number = 1;;) {
        kept.mPath = MizerBackupName(inPath, number);
        MizerContent held;
        const Place place = Judge(kept.mPath, number, inState, kept.mContent, inOverwrites, held);
        if (place == Place::km_Taken) {
            kept.mIsAside = true;
            ++number;
            continue;
        }
        if (place == Place::km_Own) {
            kept.mContent = held;
            return kept;
        }
        WnSafeFile file(kept.mPath.c_str(), inPath);
        file.CopyFrom(inPath);
        file.KeepTimesOf(inPath);
        file.Finish();
        if (WnGetFileState(inPath) != inState)
            return std::nullopt;
        if (place == Place::km_Replaceable)
            file.Commit();
        else if (!file.CommitUnlessPresent())
            continue; // another program was faster; it may hold the same
        return kept;
    }
}

void MizerBackups::RemoveLeftoversBeside(const char* inPath) {
    for (const std::string& folder : {GetFolderOf(inPath), WnGetTargetFolder(inPath)})
        if (!folder.empty() && mCleanedFolders.insert(folder).second)
            WnRemoveLeftovers(folder.c_str());
}
