#include "win/session/sessionoriginals.h"

#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

SessionOriginals::SessionOriginals(MizerDataFolder inFolder) : mBackups(std::move(inFolder)) {}
SessionOriginals::~SessionOriginals() = default;

void SessionOriginals::Keep(const std::string& inPath) {
    if (mPlaces.contains(inPath))
        return;
    try {
        std::string place = mBackups.FindOwn(MizerFindBackups(inPath), MizerReadContent(inPath.c_str()));
        if (place.empty()) {
            if (!mFolder)
                mFolder = std::make_unique<WnPrivateFolder>();
            place = mFolder->MakePath(std::to_string(mPlaces.size()) + ".gif");
            MizerCopyFile(inPath.c_str(), place.c_str());
        }
        mPlaces[inPath] = place;
    } catch (const NvErrorCode&) {
        return;
    }
}

std::string SessionOriginals::Find(const std::string& inPath) const {
    const auto found = mPlaces.find(inPath);
    return found == mPlaces.end() ? "" : found->second;
}
