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

MizerOutputFolder::MizerOutputFolder(const std::string& inFolder, Present inPresent, bool inKeepsTimes)
    : mFolder(inFolder), mPresent(inPresent), mKeepsTimes(inKeepsTimes) {
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

bool MizerOutputFolder::Prepare(const char* inPath) {
    const std::string& target = mTargets.at(inPath);
    const std::string folder = WnMakePath(target).parent_path().string();
    if (mCleanedFolders.insert(folder).second)
        WnRemoveLeftovers(folder.empty() ? "." : folder.c_str());
    const WnFileKind kind = WnGetFileKind(target.c_str());
    mFound = kind == WnFileKind::km_Missing ? std::nullopt : WnGetFileState(target.c_str());
    if (kind == WnFileKind::km_Missing)
        return true;
    if (kind != WnFileKind::km_RegularFile || mPresent == Present::km_Stays)
        NvThrow(NvErrorCode::km_FileExists);
    const auto original = WnGetFileState(inPath);
    return mPresent == Present::km_Replaced || !mFound || !original ||
           original->mModified > mFound->mModified;
}

std::string MizerOutputFolder::Deliver(const char* inPath, const char* inSmallerPath) {
    const std::string& target = mTargets.at(inPath);
    std::error_code error;
    if (const auto folder = WnMakePath(target).parent_path(); !folder.empty())
        std::filesystem::create_directories(folder, error);
    if (error)
        NvThrowWithSystemError(NvErrorCode::km_Failure, error.default_error_condition().value());
    WnSafeFile file(target.c_str(), inPath);
    file.CopyFrom(inSmallerPath ? inSmallerPath : inPath);
    if (mKeepsTimes)
        file.KeepTimesOf(inPath);
    const bool isThere = mFound ? file.CommitOver(*mFound).has_value() : file.CommitUnlessPresent();
    if (!isThere)
        NvThrow(NvErrorCode::km_FileExists);
    return target;
}
