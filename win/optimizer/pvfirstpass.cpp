#include "win/optimizer/pvfirstpass.h"

#include <optional>
#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "nvcode2/gif/nvlzwstringtable.h"
#include "win/optimizer/base/pvmemory.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/colours/pvframecolours.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/colours/pvsimilar.h"
#include "win/optimizer/colours/pvtableplan.h"
#include "win/optimizer/frames/pvdifference.h"
#include "win/optimizer/frames/pvframestream.h"
#include "win/optimizer/look/pvlookseries.h"

namespace {

constexpr PvPaletteMode km_Mode = PvPaletteMode::km_Normal;
constexpr std::uint32_t km_MaxColours = 256;

// A canvas is put together from parts of several frames, so its mean may lie above that of each of them by
// this much of it.
constexpr double km_CanvasErrorShare = 1.0;

/** Watches what becomes of frames on a screen. */
class FrameWatch {
public:
    FrameWatch(const NvGIFFrameReader& inReader)
        : mOriginal(inReader.GetScreenWidth(), inReader.GetScreenHeight()),
          mResult(inReader.GetScreenWidth(), inReader.GetScreenHeight()),
          mLooks(inReader.GetScreenWidth(), inReader.GetScreenHeight(), inReader.GetFrameCount()) {}

    void ShowOriginal(const NvGIFFrame& inFrame) { mOriginal.ShowFrame(inFrame); }
    void ShowResult(const NvGIFFrame& inFrame) {
        mResult.ShowFrame(inFrame);
        mLooks.ShowFrame(mOriginal, mResult);
    }

    double GetMeanStructure() const { return mLooks.GetMeanStructure(); }

private:
    NvGIFPlayer mOriginal;
    NvGIFPlayer mResult;
    PvLookSeries mLooks;
};

/** Has a frame show the colours that its indices will be mapped to; the pixels themselves are mapped when
 *  fewer of them are left. */
void ShowMapped(NvGIFFrame& ioFrame, const NvIndexMap& inMap, const NvColorTable& inTable) {
    NvColorTable& table = ioFrame.GetImage().GetColorTable();
    for (std::uint32_t i = 0; i < table.GetSize(); ++i)
        table.SetColor(i, inTable.GetColor(inMap[i]));
    ioFrame.GetInfo().mHasLocalTable = 0;
    ioFrame.GetInfo().mColorTable.Clear();
}

} // namespace

PvFirstPass::PvFirstPass(const char* inPath, std::uint64_t inMemoryLimit, const PvPassOptions& inOptions,
                         PvProgress& ioProgress)
    : mReader(inPath, inMemoryLimit), mOptions(inOptions) {
    if (PvEstimateMemory(mReader) > inMemoryLimit)
        NvThrow(NvErrorCode::km_OutOfMemory);
    mBackground = mReader.ShareGlobalInfo()->GetBackgroundColor();
    if (!mOptions.mIsLossless)
        ChooseColours(ioProgress);
}

// Animations are always cropped: nobody sees it. A single image changes its place in the screen, so that is
// for the user to decide.
PvFrameStream PvFirstPass::OpenStream() {
    return PvFrameStream(mReader, GetFrameCount() > 1 || mOptions.mCropsSingleImages);
}

void PvFirstPass::ChooseColours(PvProgress& ioProgress) {
    ioProgress.BeginStep(0.2);
    const std::vector<std::uint32_t> toTry = PvFramesToTry(GetFrameCount());
    std::vector<PvFrameColours> frames;
    std::vector<std::unique_ptr<NvGIFFrame>> tried;
    PvFrameStream stream = OpenStream();
    while (std::unique_ptr<NvGIFFrame> frame = stream.Next()) {
        const auto index = static_cast<std::uint32_t>(frames.size());
        ioProgress.ReportFrame(index, GetFrameCount());
        frames.emplace_back(*frame);
        if (tried.size() < toTry.size() && toTry[tried.size()] == index)
            tried.push_back(std::move(frame));
    }
    mFlattenError = stream.GetFlattenError();

    const double mergeError = MergeSimilarFrameColours(frames, tried);
    ioProgress.BeginStep(0.35);
    PvSharedPalette palette = BuildGlobalPalette(frames, km_Mode, ioProgress);
    MergeDuplicateColours(frames, palette.mTable);
    mColourError = mergeError + palette.mWorstError;
    mSharedTable = std::move(palette.mTable);
    for (const PvFrameColours& frame : frames)
        mMaps.push_back(frame.mMap);
}

PvColourAllowance PvFirstPass::GetAllowance(std::uint32_t inTolerance) const {
    PvColourAllowance allowance;
    if (mOptions.mIsLossless)
        return allowance; // none at all: what cannot be done exactly, the gate refuses
    allowance.mMeanError = mFlattenError + mColourError;
    if (GetFrameCount() > 1)
        allowance.mMeanError += km_CanvasErrorShare * mColourError + inTolerance;
    return allowance;
}

std::unique_ptr<NvAnimation> PvFirstPass::Rebuild(std::uint32_t inTolerance, PvProgress& ioProgress,
                                                  double* outStructure) {
    ioProgress.BeginStep(0.45);
    const std::uint32_t width = mReader.GetScreenWidth();
    const std::uint32_t height = mReader.GetScreenHeight();
    // What is read later keeps referring to the table in the file, so the record is a copy.
    auto animation = std::make_unique<NvAnimation>(
        std::make_shared<NvGIFGlobalInfo>(*mReader.ShareGlobalInfo()), width, height);
    std::optional<FrameWatch> watch;
    if (outStructure)
        watch.emplace(mReader);
    PvFrameStream stream = OpenStream();
    std::optional<PvDifferencer> differencer; // none for a still picture
    if (GetFrameCount() > 1)
        differencer.emplace(width, height, inTolerance, mOptions.mIsLossless ? km_MaxColours : 0);
    PvCropper cropper(width, height, stream.MayClear());
    NvLZWStringTable strings;
    for (std::uint32_t i = 0; i < GetFrameCount(); ++i) {
        ioProgress.ReportFrame(i, GetFrameCount());
        std::unique_ptr<NvGIFFrame> frame = stream.Next();
        if (watch)
            watch->ShowOriginal(*frame);
        if (!mOptions.mIsLossless)
            ShowMapped(*frame, mMaps[i], mSharedTable);
        if (differencer)
            differencer->Difference(*frame);
        else
            PvSettleDisposal(frame->GetInfo());
        if (watch)
            watch->ShowResult(*frame);
        if (stream.Crops())
            if (std::unique_ptr<NvGIFFrame> cropped = cropper.Crop(*frame))
                frame = std::move(cropped);
        if (!mOptions.mIsLossless)
            NvQuantRemap(frame->GetImage(), mMaps[i], mSharedTable);
        animation->AddFrame(NvPackedFrame(std::move(frame), strings));
    }
    if (watch)
        *outStructure = watch->GetMeanStructure();
    return animation;
}

PvTablePlan PvFirstPass::PlanTables(const NvAnimation& inAnimation) const {
    if (mOptions.mIsLossless)
        return PvPlanExactTables(inAnimation);
    return PvPlanSharedTable(inAnimation, mSharedTable, PvPaletteLimit(km_Mode));
}
