#include "nvcode2/nvanimation.h"

#include <utility>

#include "nvcode2/nvassert.h"

NvAnimation::NvAnimation(std::shared_ptr<NvGIFGlobalInfo> inInfo, std::uint32_t inWidth,
                         std::uint32_t inHeight)
    : mGlobalInfo(std::move(inInfo)), mScreenWidth(inWidth), mScreenHeight(inHeight) {
    NvAssert(mGlobalInfo);
}

NvGIFFrame& NvAnimation::GetFrame(std::uint32_t inIndex) {
    NvAssert(inIndex < mFrames.size());
    return *mFrames[inIndex];
}

const NvGIFFrame& NvAnimation::GetFrame(std::uint32_t inIndex) const {
    NvAssert(inIndex < mFrames.size());
    return *mFrames[inIndex];
}

void NvAnimation::AddFrame(std::unique_ptr<NvGIFFrame> inFrame) {
    NvAssert(inFrame);
    mFrames.push_back(std::move(inFrame));
}

void NvAnimation::ReplaceFrame(std::uint32_t inIndex, std::unique_ptr<NvGIFFrame> inFrame) {
    NvAssert(inIndex < mFrames.size());
    NvAssert(inFrame);
    mFrames[inIndex] = std::move(inFrame);
}

NvColorTable* NvAnimation::GetSharedTableOf(const NvGIFFrame& inFrame) {
    return inFrame.GetInfo().mHasLocalTable ? nullptr : &mGlobalInfo->mColorTable;
}
