#include "win/optimizer/frames/pvframestream.h"

#include <utility>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvgifframereader.h"

namespace {

// What flattening may make of frames: in real files they grow two to five times, and more where they are
// small.
constexpr std::uint64_t km_MostSprawl = 16;
constexpr std::uint64_t km_FewPixels = 100000000;

} // namespace

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
    std::unique_ptr<NvGIFFrame> frame = mFlattener ? NextFlattened() : NextAsRead();
    if (!frame || !mCropper)
        return frame;
    std::unique_ptr<NvGIFFrame> cropped = mCropper->Crop(*frame);
    if (!cropped)
        return frame;
    cropped->UpdateTransparency(SharedTableOf(*cropped), 256);
    return cropped;
}

std::unique_ptr<NvGIFFrame> PvFrameStream::Read() {
    if (mRead == mReader.GetFrameCount())
        return nullptr;
    std::unique_ptr<NvGIFFrame> frame = mReader.ReadFrame(mRead++);
    // Nothing follows the last frame that could see what it restores.
    if (mRead == mReader.GetFrameCount() && frame->GetInfo().RestoresPrevious())
        frame->GetInfo().mDisposal = NvGIFFrameInfo::km_DisposeLeave;
    return frame;
}

std::unique_ptr<NvGIFFrame> PvFrameStream::NextFlattened() {
    while (const std::unique_ptr<NvGIFFrame> read = Read())
        if (std::unique_ptr<NvGIFFrame> flattened = mFlattener->Flatten(*read)) {
            mFlattened += std::uint64_t{flattened->GetWidth()} * flattened->GetHeight();
            if (mFlattened > km_FewPixels + km_MostSprawl * mReader.GetPixelsOfAllFrames())
                throw PvSprawlingFrames();
            return flattened;
        }
    return std::exchange(mIsFinished, true) ? nullptr : mFlattener->Finish();
}

std::unique_ptr<NvGIFFrame> PvFrameStream::NextAsRead() {
    std::unique_ptr<NvGIFFrame> frame = mAhead ? std::move(mAhead) : Read();
    if (!frame || !mCoverage)
        return frame;
    mAhead = Read();
    if (mAhead)
        SettleDisposal(*frame, *mAhead);
    return frame;
}

void PvFrameStream::SettleDisposal(NvGIFFrame& ioFrame, const NvGIFFrame& inNext) {
    mCoverage->Draw(ioFrame);
    if (PvClears(ioFrame) && mCoverage->IsDrawnOver(ioFrame.GetScreenRect(), inNext))
        ioFrame.GetInfo().mDisposal = NvGIFFrameInfo::km_DisposeLeave;
    mCoverage->Dispose(ioFrame);
}

NvColorTable* PvFrameStream::SharedTableOf(const NvGIFFrame& inFrame) const {
    return inFrame.GetInfo().mHasLocalTable ? nullptr : &mReader.ShareGlobalInfo()->mColorTable;
}
