#include "nvcode2/file/nvfilelocator.h"

#include <algorithm>
#include <string_view>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"

namespace {

/** A NUL-terminated copy of both texts, one after the other. */
std::unique_ptr<char[]> Join(std::string_view inHead, std::string_view inTail) {
    auto joined = NvMakeArray<char>(inHead.size() + inTail.size() + 1);
    char* const middle = std::copy(inHead.begin(), inHead.end(), joined.get());
    std::copy(inTail.begin(), inTail.end(), middle);
    return joined;
}

std::unique_ptr<char[]> Duplicate(const char* inPath) {
    return inPath ? Join(inPath, {}) : nullptr;
}

std::string_view FolderOf(std::string_view inPath) {
    return inPath.substr(0, inPath.find_last_of("\\/") + 1);
}

} // namespace

NvFileLocator::NvFileLocator(const char* inPath) {
    SetPath(inPath);
}

NvFileLocator::NvFileLocator(const NvFileLocator& inLocator) {
    *this = inLocator;
}

NvFileLocator& NvFileLocator::operator=(const NvFileLocator& inLocator) {
    mPathStr = Duplicate(inLocator.GetPath());
    mIsSpecified = inLocator.mIsSpecified;
    return *this;
}

void NvFileLocator::SetPath(const char* inPath) {
    mPathStr = Duplicate(inPath);
    mIsSpecified = mPathStr != nullptr;
}

void NvFileLocator::ClearPath() {
    mPathStr.reset();
}

void NvFileLocator::GetFileName(std::span<char> outFileName) const {
    NvAssert(mIsSpecified);
    NvAssert(mPathStr);
    NvAssert(mPathStr[0] != '\0');
    const std::string_view path = mPathStr.get();
    const std::string_view name = path.substr(FolderOf(path).size());
    if (name.size() >= outFileName.size())
        NvThrow(NvErrorCode::km_OutOfRange);
    *std::copy(name.begin(), name.end(), outFileName.begin()) = '\0';
}

void NvFileLocator::SetFileName(const char* inFileName) {
    NvAssert(inFileName);
    NvAssert(mPathStr);
    NvAssert(mPathStr[0] != '\0');
    mPathStr = Join(FolderOf(mPathStr.get()), inFileName);
}
