#include "nvcode2/gif/nvanimation.h"

#include <utility>

#include "nvcode2/base/nvassert.h"

NvAnimation::NvAnimation(std::shared_ptr<NvGIFGlobalInfo> inInfo, std::uint32_t inWidth,
                         std::uint32_t inHeight)
    : mGlobalInfo(std::move(inInfo)), mScreenWidth(inWidth), mScreenHeight(inHeight) {
    NvAssert(mGlobalInfo);
}

void NvAnimation::AddFrame(NvPackedFrame inFrame) {
    mMemory += inFrame.GetMemory();
    mFrames.push_back(std::move(inFrame));
}

const NvPackedFrame& NvAnimation::GetPackedFrame(std::uint32_t inIndex) const {
    NvAssert(inIndex < mFrames.size());
    return mFrames[inIndex];
}

std::unique_ptr<NvGIFFrame> NvAnimation::GetFrame(std::uint32_t inIndex) const {
    return GetPackedFrame(inIndex).Unpack();
}
