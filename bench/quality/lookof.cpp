// How results look beside their originals: a line of figures for each file that both folders hold.
//
//   lookof ORIGINALS RESULTS
//
// Columns, parted by tabs: name, bytes of the original, bytes of the result, frames, then over all displayed
// frames the mean and the worst structural similarity, the mean and the worst PSNR in decibels, and the
// largest difference of a channel. A pair that cannot be compared has a "-" for each figure after the bytes.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <vector>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/look/pvcanvascomparison.h"
#include "win/optimizer/look/pvlook.h"
#include "wnatom/wnsystem.h"

namespace fs = std::filesystem;

namespace {

struct FileLook {
    std::uint32_t mFrames = 0;
    double mMeanSsim = 0.0;
    double mWorstSsim = 1.0;
    double mMeanPsnr = 0.0;
    double mWorstPsnr = PvFrameLook::km_MaxPsnr;
    std::uint32_t mMaxError = 0;

    void Add(const PvFrameLook& inLook) {
        mMeanSsim += inLook.mSsim;
        mWorstSsim = std::min(mWorstSsim, inLook.mSsim);
        mMeanPsnr += inLook.mPsnr;
        mWorstPsnr = std::min(mWorstPsnr, inLook.mPsnr);
        mMaxError = std::max(mMaxError, inLook.mMaxError);
        ++mFrames;
    }

    void Finish() {
        mMeanSsim /= mFrames;
        mMeanPsnr /= mFrames;
    }
};

/** @return nothing measured (no frames) when the two do not play side by side */
FileLook Measure(const fs::path& inOriginal, const fs::path& inResult) {
    NvGIFFrameReader original(inOriginal.c_str(), WnGetUsualMemoryLimit());
    NvGIFFrameReader result(inResult.c_str(), WnGetUsualMemoryLimit());
    FileLook look;
    if (original.GetFrameCount() != result.GetFrameCount() ||
        original.GetScreenWidth() != result.GetScreenWidth() ||
        original.GetScreenHeight() != result.GetScreenHeight())
        return look;
    NvGIFPlayer originalPlayer(original.GetScreenWidth(), original.GetScreenHeight());
    NvGIFPlayer resultPlayer(original.GetScreenWidth(), original.GetScreenHeight());
    PvLookMeter meter(original.GetScreenWidth(), original.GetScreenHeight());
    const PvColourAllowance noAllowance;
    PvCanvasComparison comparison(original.GetScreenWidth(), original.GetScreenHeight(), noAllowance);
    for (std::uint32_t i = 0; i < original.GetFrameCount(); ++i) {
        originalPlayer.ShowFrame(*original.ReadFrame(i));
        resultPlayer.ShowFrame(*result.ReadFrame(i));
        PvFrameLook frameLook = meter.Measure(originalPlayer, resultPlayer);
        for (std::uint32_t y = 0; y < original.GetScreenHeight(); ++y)
            comparison.Update(originalPlayer, resultPlayer, y, {0, original.GetScreenWidth()});
        comparison.MeasureErrors(frameLook);
        look.Add(frameLook);
    }
    look.Finish();
    return look;
}

void PrintLine(const fs::path& inOriginal, const fs::path& inResult) {
    std::printf("%s\t%ju\t%ju\t", inOriginal.filename().c_str(), fs::file_size(inOriginal),
                fs::file_size(inResult));
    FileLook look;
    try {
        look = Measure(inOriginal, inResult);
    } catch (const NvErrorCode&) {
        look.mFrames = 0; // neither program reads what is no sound GIF
    }
    if (look.mFrames == 0)
        std::printf("-\t-\t-\t-\t-\t-\n");
    else
        std::printf("%u\t%.6f\t%.6f\t%.3f\t%.3f\t%u\n", look.mFrames, look.mMeanSsim, look.mWorstSsim,
                    look.mMeanPsnr, look.mWorstPsnr, look.mMaxError);
}

} // namespace

int main(int inCount, char** inArguments) {
    if (inCount != 3) {
        std::fputs("usage: lookof ORIGINALS RESULTS\n", stderr);
        return 2;
    }
    try {
        std::vector<fs::path> originals;
        for (const auto& entry : fs::directory_iterator(inArguments[1]))
            if (fs::exists(inArguments[2] / entry.path().filename()))
                originals.push_back(entry.path());
        std::sort(originals.begin(), originals.end());
        for (const fs::path& original : originals)
            PrintLine(original, inArguments[2] / original.filename());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lookof: %s\n", error.what());
        return 1;
    }
    return 0;
}
