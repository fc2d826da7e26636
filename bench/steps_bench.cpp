// Where the time of a run goes: each step of the first pass, on an animation of a screen that scrolls.
//
// A step's input is made anew before each measurement, which is not counted.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/pictures.h"
#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/gif/nvlzwstringtable.h"
#include "win/optimizer/base/pvoptsettings.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/codes/pvfill.h"
#include "win/optimizer/codes/pvswap.h"
#include "win/optimizer/colours/pvframecolours.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/colours/pvsimilar.h"
#include "win/optimizer/colours/pvtableplan.h"
#include "win/optimizer/frames/pvcrop.h"
#include "win/optimizer/frames/pvdifference.h"

namespace {

constexpr std::uint32_t km_Width = 640;
constexpr std::uint32_t km_Height = 360;
constexpr std::uint32_t km_Frames = 20;
constexpr std::uint32_t km_TableLimit = 128;

using Frames = std::vector<std::unique_ptr<NvGIFFrame>>;

class SilentHost : public PvOptHost {
    void BackupFile(const char*) override {}
    bool ReportProgress(double) override { return false; }
};

Frames DrawMovie(PictureKind inKind) {
    const NvIndexedImage scene = DrawPicture(inKind, km_Width, km_Height + 2 * km_Frames);
    Frames frames;
    for (std::uint32_t i = 0; i < km_Frames; ++i) {
        const auto top = static_cast<std::int32_t>(2 * i);
        const NvRect part{0, top, km_Width, top + static_cast<std::int32_t>(km_Height)};
        const std::unique_ptr<NvImage> image = scene.CopyRegion(part);
        auto info = std::make_unique<NvGIFFrameInfo>();
        info->mWidth = km_Width;
        info->mHeight = km_Height;
        info->mColorTable = scene.GetColorTable();
        frames.push_back(std::make_unique<NvGIFFrame>(static_cast<NvIndexedImage&&>(*image),
                                                      NvBitmapImage(km_Width, km_Height, 0, 1),
                                                      std::move(info)));
    }
    return frames;
}

/** A movie's way through the first pass; reading it apart, which bench/lzw_bench times. */
struct Run {
    Frames mFrames;
    std::vector<PvFrameColours> mColours;
    PvSharedPalette mPalette;
    NvAnimation mAnimation{std::make_shared<NvGIFGlobalInfo>(), km_Width, km_Height};
    PvTablePlan mPlan;
};

struct Step {
    const char* mName;
    std::function<void(Run&, PvProgress&)> mRun;
};

template <typename Work>
void ForEachFrame(Run& io, const Work& inWork) {
    for (std::unique_ptr<NvGIFFrame>& frame : io.mFrames)
        inWork(frame);
}

const Step km_Steps[] = {
    {"count colours",
     [](Run& io, PvProgress&) {
         ForEachFrame(io, [&](const auto& frame) { io.mColours.emplace_back(*frame); });
     }},
    {"merge near colours",
     [](Run& io, PvProgress&) {
         std::vector<std::unique_ptr<NvGIFFrame>> tried;
         for (const std::uint32_t i : PvFramesToTry(km_Frames))
             tried.emplace_back(io.mFrames[i]->Copy());
         MergeSimilarFrameColours(io.mColours, tried);
     }},
    {"build the palette",
     [](Run& io, PvProgress& progress) {
         io.mPalette = BuildGlobalPalette(io.mColours, PvPaletteMode::km_Normal, progress);
         MergeDuplicateColours(io.mColours, io.mPalette.mTable);
     }},
    {"difference",
     [](Run& io, PvProgress&) {
         PvDifferencer differencer(km_Width, km_Height, km_DifferenceTolerance, 0);
         ForEachFrame(io, [&](auto& frame) {
             frame->GetInfo().mHasLocalTable = 0;
             differencer.Difference(*frame);
         });
     }},
    {"crop",
     [](Run& io, PvProgress&) {
         PvCropper cropper(km_Width, km_Height, false);
         ForEachFrame(io, [&](auto& frame) {
             if (auto cropped = cropper.Crop(*frame))
                 frame = std::move(cropped);
         });
     }},
    {"map and pack",
     [](Run& io, PvProgress&) {
         NvLZWStringTable strings;
         for (std::size_t i = 0; i < io.mFrames.size(); ++i) {
             NvQuantRemap(io.mFrames[i]->GetImage(), io.mColours[i].mMap, io.mPalette.mTable);
             io.mAnimation.AddFrame(NvPackedFrame(std::move(io.mFrames[i]), strings));
         }
     }},
    {"plan the table and unpack",
     [](Run& io, PvProgress&) {
         io.mPlan = PvPlanSharedTable(io.mAnimation, io.mPalette.mTable, km_TableLimit);
         for (std::uint32_t i = 0; i < io.mFrames.size(); ++i)
             io.mFrames[i] = io.mPlan.MakeFrame(io.mAnimation, i);
     }},
    {"settle undrawn pixels",
     [](Run& io, PvProgress&) {
         NvLZWStringTable strings;
         PvUndrawnFiller filler(km_Width, km_Height, strings);
         ForEachFrame(io, [&](auto& frame) { filler.FillUndrawnPixels(*frame); });
     }},
    {"exchange pixels",
     [](Run& io, PvProgress&) {
         NvLZWStringTable strings;
         PvPixelSwapper swapper(strings);
         ForEachFrame(io, [&](auto& frame) { swapper.SwapIfWorthIt(*frame); });
     }},
};

void RunStep(benchmark::State& ioState, PictureKind inKind, std::size_t inStep) {
    SilentHost host;
    for (auto _ : ioState) {
        ioState.PauseTiming();
        PvProgress progress(host);
        Run run;
        run.mFrames = DrawMovie(inKind);
        for (std::size_t i = 0; i < inStep; ++i)
            km_Steps[i].mRun(run, progress);
        ioState.ResumeTiming();
        km_Steps[inStep].mRun(run, progress);
    }
    const double pixels = static_cast<double>(ioState.iterations()) * km_Width * km_Height * km_Frames;
    ioState.counters["pixels/s"] = {pixels, benchmark::Counter::kIsRate};
}

const bool km_AreRegistered = [] {
    for (const PictureKind kind : {PictureKind::km_Screen, PictureKind::km_Photo})
        for (std::size_t step = 0; step < std::size(km_Steps); ++step) {
            const std::string name = std::string(PictureName(kind)) + "/" + km_Steps[step].mName;
            benchmark::RegisterBenchmark(name.c_str(), RunStep, kind, step)
                ->Unit(benchmark::kMillisecond)
                ->Iterations(5);
        }
    return true;
}();

} // namespace
