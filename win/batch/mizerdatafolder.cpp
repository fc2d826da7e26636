#include "win/batch/mizerdatafolder.h"

#include <cstring>

#include "wnatom/wnsystem.h"

std::string MizerDataFolder::MakePath(const char* inName) const {
    return mFind() + WnGetSeparator() + inName;
}

void MizerDataFolder::ComplainOf(int inError, const char* inWhat, const std::string& inPath,
                                 const char* inCaption) const {
    mComplain(std::string(inWhat) + ": " + inPath + ", error " + std::strerror(inError), inCaption);
}
