#include "win/session/sessionoriginals.h"

#include "nvcode2/base/nverrorcode.h"
#include "win/batch/mizerbackups.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

SessionOriginals::SessionOriginals() = default;
SessionOriginals::~SessionOriginals() = default;

void SessionOriginals::Keep(const std::string& inPath) {
    if (mPlaces.contains(inPath))
        return;
    try {
        std::string place = MizerBackupName(inPath);
        if (WnGetFileKind(place.c_str()) != WnFileKind::km_RegularFile) {
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
