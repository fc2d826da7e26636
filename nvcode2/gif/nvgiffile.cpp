#include "nvcode2/gif/nvgiffile.h"

#include <utility>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"

NvGIFFile::NvGIFFile() : mReader(mFile), mWriter(mFile), mDecoder(mReader), mEncoder(mWriter) {}

NvGIFFile::~NvGIFFile() = default;

std::shared_ptr<NvGIFGlobalInfo> NvGIFFile::CreateGlobalInfo() {
    return std::make_shared<NvGIFGlobalInfo>();
}

std::unique_ptr<NvGIFFrameInfo> NvGIFFile::DetachFrameInfo() {
    NvAssert(mFrameInfoPtr);
    return std::move(mFrameInfoPtr);
}

void NvGIFFile::ReleaseFrames() {
    mFrameLocations.clear();
    mFrameInfoPtr.reset();
    mPendingGraphicControl = false;
    mReader.Reset();
    mWriter.Discard();
}

std::uint8_t NvGIFMinimumCodeSize(std::uint32_t inColorCount) {
    if (inColorCount == 0 || inColorCount > 256)
        NvThrow(NvErrorCode::km_BadParameter);
    return static_cast<std::uint8_t>(NvColorTable::GetBitsNeeded(inColorCount));
}
