#include "win/optimizer/frames/pvframestream.h"

#include <utility>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvgifframereader.h"

PvFrameStream::PvFrameStream(NvGIFFrameReader& inReader, bool inCrops) : mReader(inReader) {
    const std::uint32_t width = inReader.GetScreenWidth();
    const std::uint32_t height = inReader.GetScreenHeight();
    if (inReader.AnyFrameRestores())
        mFlattener.emplace(width, height);
    else if (inReader.AnyFrameClears())
        mCoverage.emplace(width, height);
    if (inCrops)
        mCropper.emplace(width, height, MayClear());
}

std::unique_ptr<NvGIFFrame> PvFrameStream::Next() {
    std::unique_ptr<NvGIFFrame> frame = mAhead ? std::move(mAhead) : Read();
    if (!frame)
        return nullptr;
    if (MayClear()) {
        mAhead = Read();
        if (mAhead)
            SettleDisposal(*frame, *mAhead);
    }
    std::unique_ptr<NvGIFFrame> cropped = mCropper ? mCropper->Crop(*frame) : nullptr;
    if (!cropped)
        return frame;
    cropped->UpdateTransparency(SharedTableOf(*cropped), 256);
    return cropped;
}

std::unique_ptr<NvGIFFrame> PvFrameStream::Read() {
    if (mRead == mReader.GetFrameCount())
        return nullptr;
    std::unique_ptr<NvGIFFrame> frame = mReader.ReadFrame(mRead++);
    return mFlattener ? mFlattener->Flatten(*frame) : std::move(frame);
}

// A flattened frame is cleared where the next one leaves something of it to be seen that is gone by then.
void PvFrameStream::SettleDisposal(NvGIFFrame& ioFrame, const NvGIFFrame& inNext) {
    if (mFlattener) {
        if (!PvIsCoveredBy(ioFrame, inNext))
            ioFrame.GetInfo().mDisposal = NvGIFFrameInfo::km_DisposeClear;
        return;
    }
    mCoverage->Draw(ioFrame);
    if (PvClears(ioFrame) && mCoverage->IsDrawnOver(ioFrame.GetScreenRect(), inNext))
        ioFrame.GetInfo().mDisposal = NvGIFFrameInfo::km_DisposeLeave;
    mCoverage->Dispose(ioFrame);
}

NvColorTable* PvFrameStream::SharedTableOf(const NvGIFFrame& inFrame) const {
    return inFrame.GetInfo().mHasLocalTable ? nullptr : &mReader.ShareGlobalInfo()->mColorTable;
}
