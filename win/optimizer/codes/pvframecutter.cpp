#include "win/optimizer/codes/pvframecutter.h"

#include <algorithm>

#include "nvcode2/gif/nvgifframe.h"

const NvLZWStrings* PvFrameCutter::Cut(NvGIFFrame& ioFrame, std::uint64_t inKnownCodes,
                                       const PvFillCanvas* inCanvas) {
    PvCollectPresent(ioFrame, mChoices);
    mSettled.mPixelBits = mChoices.mPixelBits;
    mSettled.mPresent = mChoices.mPresent;
    mChooser.Begin(mChoices.mPresent, mChoices.mPixelBits, inKnownCodes);
    bool hasChoices = inCanvas && ioFrame.HasTransparency();
    if (hasChoices && PvCollectOthers(ioFrame, *inCanvas, PvChoice::km_Undrawn, mChoices))
        if (const PvFillChooser::Pixels* settled = mChooser.Choose(mChoices))
            mSettled.mPresent = *settled;
    hasChoices = hasChoices && PvCollectOthers(ioFrame, *inCanvas, PvChoice::km_Shown, mChoices);
    mSettled.mOther = mSettled.mPresent;

    std::uint64_t fewest = PvLZWBits(mChoices.mPixelBits, mChooser.GetFewestCodes() - 1);
    const Pixels* pixels = &mSettled.mPresent;
    const NvLZWStrings* strings = nullptr;
    for (Way& way : mWays) {
        if ((way.mHasChoices && !hasChoices) || !IsToBeTried(way))
            continue;
        mParser.Parse(way.mHasChoices ? mChoices : mSettled, way.mCaution, fewest, way.mResult);
        if (!Learn(way, fewest))
            continue;
        fewest = way.mResult.mBits;
        pixels = &way.mResult.mPixels;
        strings = &way.mResult.mStrings;
    }
    if (*pixels != mChoices.mPresent)
        PvStorePixels(ioFrame, *pixels);
    return strings;
}

/** @return  whether the way needs fewer bits than any before */
bool PvFrameCutter::Learn(Way& ioWay, std::uint64_t inFewest) {
    constexpr std::uint32_t km_LongestPause = 3;
    const bool wins = ioWay.mResult.mBits < inFewest;
    ioWay.mPause = wins ? 0 : std::min(2 * ioWay.mPause + 1, km_LongestPause);
    ioWay.mPassedOver = 0;
    return wins;
}

bool PvFrameCutter::IsToBeTried(Way& ioWay) {
    if (ioWay.mPassedOver >= ioWay.mPause)
        return true;
    ++ioWay.mPassedOver;
    return false;
}
