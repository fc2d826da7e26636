#include "win/batch/filequeue.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "nvcode2/base/nverrorcode.h"
#include "win/batch/filepattern.h"

namespace {

char Fold(char inCharacter) {
    return inCharacter >= 'A' && inCharacter <= 'Z' ? static_cast<char>(inCharacter + ('a' - 'A'))
                                                    : inCharacter;
}

std::string Folded(std::string inText) {
    std::transform(inText.begin(), inText.end(), inText.begin(), Fold);
    return inText;
}

/** The last three letters of a path in lower case; the whole of a shorter one. */
std::string FoldedEnd(std::string_view inPath) {
    return Folded(std::string(inPath.substr(inPath.size() - std::min<std::size_t>(inPath.size(), 3))));
}

} // namespace

/* Goes back only to the last star, which is enough: an earlier one could not reach any further. */
bool MizerMatchesPattern(std::string_view inName, std::string_view inPattern) {
    std::size_t name = 0;
    std::size_t pattern = 0;
    std::size_t afterStar = std::string_view::npos;
    std::size_t retry = 0;
    while (name < inName.size()) {
        if (pattern < inPattern.size() && inPattern[pattern] == '*') {
            afterStar = ++pattern;
            retry = name;
        } else if (pattern < inPattern.size() &&
                   (inPattern[pattern] == '?' || Fold(inPattern[pattern]) == Fold(inName[name]))) {
            ++pattern;
            ++name;
        } else if (afterStar != std::string_view::npos) {
            pattern = afterStar;
            name = ++retry;
        } else {
            return false;
        }
    }
    return inPattern.find_first_not_of('*', pattern) == std::string_view::npos;
}

FileQueue::~FileQueue() {
    Clear();
}

bool FileQueue::AddFile(const char* inPath) {
    try {
        const auto identity = WnGetFileIdentity(inPath);
        std::string folded = Folded(inPath);
        if (HoldsFile(folded, identity))
            return false;
        const std::size_t size = std::strlen(inPath) + 1;
        auto copy = std::make_unique<char[]>(size);
        std::memcpy(copy.get(), inPath, size);
        mPaths.Append(copy.get());
        copy.release(); // NOLINT(bugprone-unused-return-value): the list holds it now
        if (identity)
            mIdentities.insert(*identity);
        mFoldedPaths.emplace(std::move(folded), identity.has_value());
        if (mOnAppend)
            mOnAppend(inPath);
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
    return true;
}

void FileQueue::TakeOver(FileQueue& ioOther) {
    for (; !ioOther.IsEmpty(); ioOther.mPaths.Remove(ioOther.mPaths.GetFirst()))
        mPaths.Append(ioOther.mPaths.GetFirst()->GetElement());
    mIdentities.merge(ioOther.mIdentities);
    mFoldedPaths.merge(ioOther.mFoldedPaths);
}

bool FileQueue::HoldsFile(const std::string& inFoldedPath,
                          const std::optional<WnFileIdentity>& inIdentity) const {
    if (inIdentity && mIdentities.contains(*inIdentity))
        return true;
    const auto [first, last] = mFoldedPaths.equal_range(inFoldedPath);
    return std::any_of(first, last, [&](const auto& inEntry) {
        const bool bothExist = inIdentity.has_value() && inEntry.second;
        return !bothExist; // else they are different files, on a file system that distinguishes case
    });
}

std::size_t FileQueue::AddFolder(const char* inPath) {
    const std::string path = inPath;
    const auto separator = std::find_if(path.rbegin(), path.rend(), WnIsSeparator);
    std::string folder(path.begin(), separator.base());
    std::string pattern(separator.base(), path.end());
    if (folder.empty())
        folder = {'.', WnGetSeparator()};
    if (pattern.empty())
        pattern = "*";

    std::size_t namedGIF = 0;
    for (const std::string& name : WnListFiles(folder.c_str())) {
        if (!MizerMatchesPattern(name, pattern))
            continue;
        const std::string file = folder + name;
        AddFile(file.c_str());
        namedGIF += MizerIsNamedGIF(file.c_str()) ? 1 : 0;
    }
    return namedGIF;
}

FileQueue::Named FileQueue::AddName(const char* inName) {
    std::string name = inName;
    switch (WnGetFileKind(inName)) {
    case WnFileKind::km_RegularFile:
        return AddFile(inName) ? Named::km_Queued : Named::km_AlreadyQueued;
    case WnFileKind::km_Other:
        NvThrow(NvErrorCode::km_WrongPermission);
    case WnFileKind::km_Folder:
        if (!WnIsSeparator(name.back()))
            name += WnGetSeparator();
        break;
    case WnFileKind::km_Missing:
        if (name.find_first_of("*?") == std::string::npos)
            NvThrow(NvErrorCode::km_FileNotFound);
        break;
    }
    return AddFolder(name.c_str()) != 0 ? Named::km_Queued : Named::km_NoGIFs;
}

std::unique_ptr<char[]> FileQueue::TakeFirst() {
    std::unique_ptr<char[]> path(static_cast<char*>(mPaths.GetFirst()->GetElement()));
    mPaths.Remove(mPaths.GetFirst());
    return path;
}

void FileQueue::Clear() {
    while (!IsEmpty())
        TakeFirst();
    mIdentities.clear();
    mFoldedPaths.clear();
}

bool MizerIsNamedGIF(const char* inPath) {
    return FoldedEnd(inPath) == "gif";
}

bool MizerIsNamedBackup(const char* inPath) {
    return FoldedEnd(inPath) == "bak";
}
