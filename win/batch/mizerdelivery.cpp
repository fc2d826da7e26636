#include "win/batch/mizerdelivery.h"

#include <filesystem>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

std::string MizerDryRun::Deliver(const char* inPath, const char* inSmallerPath) {
    if (inSmallerPath)
        WnCheckReplaceable(inPath);
    return {};
}

MizerOutputFolder::MizerOutputFolder(const std::string& inFolder) : mFolder(inFolder) {
    if (mFolder.empty() || !WnIsSeparator(mFolder.back()))
        mFolder += WnGetSeparator();
}

std::string MizerOutputFolder::Plan(const std::string& inPath, const std::string& inPlace) {
    const auto [planned, isNew] = mPathsByPlace.try_emplace(inPlace, inPath);
    if (!isNew)
        return planned->second;
    mTargets[inPath] = mFolder + inPlace;
    return {};
}

void MizerOutputFolder::Prepare(const char* inPath) {
    const std::string& target = mTargets.at(inPath);
    const std::string folder = WnMakePath(target).parent_path().string();
    if (mCleanedFolders.insert(folder).second)
        WnRemoveLeftovers(folder.c_str());
    if (WnGetFileKind(target.c_str()) != WnFileKind::km_Missing)
        NvThrow(NvErrorCode::km_FileExists);
}

std::string MizerOutputFolder::Deliver(const char* inPath, const char* inSmallerPath) {
    const std::string& target = mTargets.at(inPath);
    std::error_code error;
    std::filesystem::create_directories(WnMakePath(target).parent_path(), error);
    if (error)
        NvThrowWithSystemError(NvErrorCode::km_Failure, error.default_error_condition().value());
    WnSafeFile file(target.c_str(), inPath);
    file.CopyFrom(inSmallerPath ? inSmallerPath : inPath);
    if (!file.CommitUnlessPresent())
        NvThrow(NvErrorCode::km_FileExists);
    return target;
}
