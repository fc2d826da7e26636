#include "win/session/gifmovie.h"

#include <new>
#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "wnatom/wnsystem.h"

GIFMovie::GIFMovie(std::string inPath, std::uint64_t inMemoryLimit)
    : mPath(std::move(inPath)),
      mReader(std::make_unique<NvGIFFrameReader>(mPath.c_str(), WnGetUsualMemoryLimit())) {
    if (mReader->EstimatePlayMemory() > inMemoryLimit)
        NvThrow(NvErrorCode::km_OutOfMemory);
    Show(0);
}

GIFMovie::~GIFMovie() = default;

void GIFMovie::Advance() {
    if (GetFrameCount() > 1)
        Show((mFrame + 1) % GetFrameCount());
}

std::uint32_t GIFMovie::GetFrameCount() const {
    return mReader->GetFrameCount();
}

void GIFMovie::Show(std::uint32_t inFrame) {
    constexpr std::uint32_t leastDelay = 20;
    constexpr std::uint32_t usualDelay = 100;
    try {
        if (inFrame == 0)
            mCanvas = std::make_unique<NvGIFPlayer>(mReader->GetScreenWidth(), mReader->GetScreenHeight());
        const NvGIFFrameInfo& info = mReader->PlayFrame(inFrame, *mCanvas);
        mDelay = info.mDelay * 10u < leastDelay ? usualDelay : info.mDelay * 10u;
        mFrame = inFrame;
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}
