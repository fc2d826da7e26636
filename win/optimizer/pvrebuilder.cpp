#include "win/optimizer/pvrebuilder.h"

#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "nvcode2/gif/nvlentstringtable.h"
#include "win/optimizer/base/pvmemory.h"
#include "win/optimizer/base/pvoptsettings.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/colours/pvexacttables.h"
#include "win/optimizer/colours/pvframecolours.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/colours/pvsimilar.h"
#include "win/optimizer/frames/pvcrop.h"
#include "win/optimizer/frames/pvframestream.h"
#include "win/optimizer/look/pvlookseries.h"

namespace {

constexpr PvPaletteMode km_Mode = PvPaletteMode::km_Normal;
constexpr std::uint32_t km_MaxColours = 256;

/** Whether so many frames show what the whole animation will be like. */
bool IsTimeToJudge(std::uint32_t inFrames, std::uint32_t inFrameCount) {
    constexpr std::uint32_t km_LeastFrames = 8;
    const bool isPartDone =
        inFrames == inFrameCount / 8 || inFrames == inFrameCount / 4 || inFrames == inFrameCount / 2;
    return inFrames == inFrameCount || (isPartDone && inFrames >= km_LeastFrames);
}

/** Measures how close rebuilt frames look to the original ones; does nothing unless that is asked for. */
class FrameWatch {
public:
    FrameWatch(const NvGIFFrameReader& inReader, bool inIsWanted) {
        if (inIsWanted)
            mScreens.emplace(inReader);
    }

    void ShowOriginal(const NvGIFFrame& inFrame) {
        if (mScreens)
            mScreens->mOriginal.ShowFrame(inFrame);
    }
    void ShowResult(const NvGIFFrame& inFrame) {
        if (!mScreens)
            return;
        mScreens->mResult.ShowFrame(inFrame);
        mScreens->mLooks.ShowFrame(mScreens->mOriginal, mScreens->mResult);
    }

    double GetMeanStructure() const { return mScreens->mLooks.GetMeanStructure(); }

private:
    struct Screens {
        explicit Screens(const NvGIFFrameReader& inReader)
            : mOriginal(inReader.GetScreenWidth(), inReader.GetScreenHeight()),
              mResult(inReader.GetScreenWidth(), inReader.GetScreenHeight()),
              mLooks(inReader.GetScreenWidth(), inReader.GetScreenHeight(), inReader.GetFrameCount()) {}

        NvGIFPlayer mOriginal;
        NvGIFPlayer mResult;
        PvLookSeries mLooks;
    };

    std::optional<Screens> mScreens;
};

} // namespace

PvRebuilder::PvRebuilder(const char* inPath, const PvOptSettings& inSettings)
    : mReader(inPath, inSettings.mMemoryLimit), mSettings(inSettings) {
    CheckMemory(0);
    mBackground = mReader.ShareGlobalInfo()->GetBackgroundColor();
}

/** @param inFrames  bytes that frames take already */
void PvRebuilder::CheckMemory(std::uint64_t inFrames) const {
    if (PvEstimateMemory(mReader) + inFrames > mSettings.mMemoryLimit)
        NvThrow(NvErrorCode::km_OutOfMemory);
}

// Nobody sees an animation being cropped. A still picture changes its place on the screen, so that is for the
// user to decide.
PvFrameStream PvRebuilder::OpenStream() {
    return PvFrameStream(mReader, GetFrameCount() > 1 || mSettings.mCropsSingleImages);
}

// Each frame is read for its colours, for its pixels, and by the gate, which reads the result, too; looking
// at the latter costs about as much again.
std::uint64_t PvRebuilder::GetLeastWork() const {
    return 5 * PvWorkOfReading(mReader);
}

void PvRebuilder::ChooseColours(PvProgress& ioProgress) {
    ioProgress.BeginStep(PvProgress::km_ColoursCounted);
    ioProgress.SpendWork(PvWorkOfReading(mReader));
    const std::vector<std::uint32_t> toTry = PvFramesToTry(GetFrameCount());
    std::vector<PvFrameColours> frames;
    std::vector<std::unique_ptr<NvGIFFrame>> tried;
    PvFrameStream stream = OpenStream();
    while (std::unique_ptr<NvGIFFrame> frame = stream.Next()) {
        const auto index = static_cast<std::uint32_t>(frames.size());
        ioProgress.ReportFrame(index, GetFrameCount());
        ioProgress.SpendWork(PvWorkOnFrame(*frame));
        frames.emplace_back(*frame);
        if (tried.size() < toTry.size() && toTry[tried.size()] == index)
            tried.push_back(std::move(frame));
    }
    const std::vector<PvFrameColours> asRead = frames;
    if (!PvFitsPalette(frames, km_Mode))
        MergeSimilarFrameColours(frames, tried);
    ioProgress.BeginStep(PvProgress::km_PaletteBuilt);
    PvSharedPalette palette = BuildGlobalPalette(frames, km_Mode, ioProgress);
    MergeDuplicateColours(frames, palette.mTable);
    mSharedTable = std::move(palette.mTable);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        mMaps.push_back(frames[i].mMap);
        for (std::uint32_t entry = 0; entry < asRead[i].mTable.GetSize(); ++entry)
            if (asRead[i].mHistogram[entry] != 0)
                mColourErrors.Add(NvPackColor(asRead[i].mTable.GetColor(entry)),
                                  NvPackColor(mSharedTable.GetColor(frames[i].mMap[entry])));
    }
    mColourErrors.Settle();
    // Which colour a quantized one then met the palette as is not known any more.
    if (const PvColourErrors* flattened = stream.GetFlattenErrors())
        mColourErrors.AddAll(*flattened, mColourErrors.GetLargest());
    mColourErrors.Settle();
}

PvColourAllowance PvRebuilder::GetAllowance(std::uint32_t inTolerance) const {
    PvColourAllowance allowance;
    if (mSettings.mIsLossless)
        return allowance; // none at all: what cannot be done exactly, the gate refuses
    allowance.mPalette = mColourErrors;
    if (GetFrameCount() > 1)
        allowance.mTolerance = inTolerance;
    return allowance;
}

std::unique_ptr<NvAnimation> PvRebuilder::Rebuild(std::uint32_t inTolerance, PvProgress& ioProgress,
                                                  const Judge& inJudge) {
    if (!mSettings.mIsLossless && mMaps.empty())
        ChooseColours(ioProgress);
    ioProgress.BeginStep(PvProgress::km_Rebuilt);
    ioProgress.SpendWork(PvWorkOfReading(mReader));
    std::unique_ptr<NvAnimation> animation = MakeEmptyAnimation();
    PvFrameStream stream = OpenStream();
    std::optional<PvDifferencer> differencer = MakeDifferencer(inTolerance);
    PvCropper cropper(mReader.GetScreenWidth(), mReader.GetScreenHeight(), stream.MayClear());
    FrameWatch watch(mReader, inJudge != nullptr);
    NvLentStringTable strings;
    for (std::uint32_t i = 0; i < GetFrameCount(); ++i) {
        ioProgress.ReportFrame(i, GetFrameCount());
        std::unique_ptr<NvGIFFrame> frame = stream.Next();
        ioProgress.SpendWork(PvWorkOnFrame(*frame));
        watch.ShowOriginal(*frame);
        ShowSharedColours(*frame, i);
        if (differencer)
            differencer->Difference(*frame);
        else
            PvSettleDisposal(frame->GetInfo());
        watch.ShowResult(*frame);
        if (stream.Crops())
            if (std::unique_ptr<NvGIFFrame> cropped = cropper.Crop(*frame))
                frame = std::move(cropped);
        MapToSharedTable(*frame, i);
        animation->AddFrame(NvPackedFrame(std::move(frame), strings));
        CheckMemory(animation->GetMemory());
        if (inJudge && IsTimeToJudge(i + 1, GetFrameCount()) &&
            !inJudge(*animation, watch.GetMeanStructure()))
            break;
    }
    return animation;
}

// Frames read later keep referring to the table in the file, so the record is a copy.
std::unique_ptr<NvAnimation> PvRebuilder::MakeEmptyAnimation() const {
    return std::make_unique<NvAnimation>(std::make_shared<NvGIFGlobalInfo>(*mReader.ShareGlobalInfo()),
                                         mReader.GetScreenWidth(), mReader.GetScreenHeight());
}

/** @return  nothing for a still picture */
std::optional<PvDifferencer> PvRebuilder::MakeDifferencer(std::uint32_t inTolerance) const {
    if (GetFrameCount() < 2)
        return std::nullopt;
    // Without a palette of our own, a frame may draw with every entry that a table can have.
    const std::uint32_t fullTable = mSettings.mIsLossless ? km_MaxColours : 0;
    return PvDifferencer(mReader.GetScreenWidth(), mReader.GetScreenHeight(), inTolerance, fullTable, true);
}

/** Has a frame show the shared colours that its indices stand for. Its pixels are mapped later, when fewer of
 *  them are left. */
void PvRebuilder::ShowSharedColours(NvGIFFrame& ioFrame, std::uint32_t inIndex) const {
    if (mSettings.mIsLossless)
        return;
    NvColorTable& table = ioFrame.GetImage().GetColorTable();
    for (std::uint32_t i = 0; i < table.GetSize(); ++i)
        table.SetColor(i, mSharedTable.GetColor(mMaps[inIndex][i]));
    ioFrame.GetInfo().mHasLocalTable = 0;
    ioFrame.GetInfo().mColorTable.Clear();
}

void PvRebuilder::MapToSharedTable(NvGIFFrame& ioFrame, std::uint32_t inIndex) const {
    if (!mSettings.mIsLossless)
        NvQuantRemap(ioFrame.GetImage(), mMaps[inIndex], mSharedTable);
}

PvTablePlan PvRebuilder::PlanTables(const NvAnimation& inAnimation) const {
    if (mSettings.mIsLossless)
        return PvPlanExactTables(inAnimation);
    return PvPlanSharedTable(inAnimation, mSharedTable, PvPaletteLimit(km_Mode));
}
