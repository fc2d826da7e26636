#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifdamage.h"
#include "win/optimizer/base/pvframelook.h"

/** What became of one file, beyond its size. */
struct PvOutcome {
    std::optional<NvErrorCode> mLoadError; ///< why the file could not be read as a GIF; it was left alone
    std::string mGateReason; ///< what a viewer would have noticed about a smaller result that was not kept
                             ///< for it; empty: nothing was rejected
    bool mIsChangedMeanwhile = false; ///< another program changed the file, so it was left alone
    bool mIsTooMuchWork = false;      ///< it would cost more work than it may, so it was left alone
    bool mIsHalfDone = false;         ///< it was made smaller, but the second pass failed
    NvGIFDamage mDamage;              ///< as far as the file was read
    std::uint32_t mFrameCount = 0;
    PvFrameLook mWorstLook; ///< of the displayed frame that changed most, when the file was made smaller
};
