#include "win/batch/mizerdatafolder.h"

#include <cerrno>
#include <cstring>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wnsystem.h"

std::string MizerDataFolder::MakePath(const char* inName) const {
    return mFind() + WnGetSeparator() + inName;
}

std::FILE* MizerDataFolder::Open(const std::string& inPath, const char* inMode) {
    try {
        if (WnGetFileKind(inPath.c_str()) == WnFileKind::km_Other) {
            errno = EINVAL;
            return nullptr;
        }
    } catch (const NvErrorCode&) { // opening it has better words
    }
    return std::fopen(inPath.c_str(), inMode);
}

void MizerDataFolder::ComplainOf(int inError, PvText inWhat, const std::string& inPath,
                                 PvText inCaption) const {
    mComplain(PvSay(inWhat, {inPath, std::strerror(inError)}), PvSay(inCaption).c_str());
}
