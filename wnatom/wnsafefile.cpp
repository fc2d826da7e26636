#include "wnatom/wnsafefile.h"

#include "nvcode2/file/nvfile.h"
#include "wnatom/wholefile.h"

void WnSafeFile::Write(const void* inBytes, std::size_t inCount) {
    NvFile file;
    file.Open(NvFile::km_WritePerm, false, mDescriptor);
    file.Write(inBytes, static_cast<std::uint32_t>(inCount));
}

void WnSafeFile::CopyFrom(const char* inPath) {
    NvFile file;
    file.Open(NvFile::km_WritePerm, false, mDescriptor);
    WnCopyInto(inPath, file);
}

void WnSafeFile::KeepTimesOf(const char* inPath) {
    if (const auto state = WnGetFileState(inPath))
        mModified = state->mModified;
}
