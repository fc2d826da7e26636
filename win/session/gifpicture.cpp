#include "win/session/gifpicture.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "nvcode2/gif/nvthumbnail.h"

void GIFPicture::Render(const NvGIFPlayer& inPlayer, std::uint32_t inBoxWidth, std::uint32_t inBoxHeight,
                        double inLargest) {
    mPixels.clear();
    mWidth = mHeight = 0;
    if (inPlayer.GetScreenWidth() == 0 || inPlayer.GetScreenHeight() == 0)
        return;
    const NvRGBImage reduced = NvThumbnail(inBoxWidth, inBoxHeight).Render(inPlayer);
    std::unique_ptr<NvImage> picture;
    const double scale = std::min({inLargest, static_cast<double>(inBoxWidth) / reduced.GetWidth(),
                                   static_cast<double>(inBoxHeight) / reduced.GetHeight()});
    if (scale > 1) {
        const auto scaled = [&](std::uint32_t inLength) {
            return static_cast<std::uint32_t>(std::lround(inLength * scale));
        };
        picture = reduced.NewResizedImage(scaled(reduced.GetWidth()), scaled(reduced.GetHeight()), nullptr);
        picture = picture->NewVerticalMirror();
    } else {
        picture = reduced.NewVerticalMirror();
    }
    const std::uint32_t rowBytes = NvAlignedRowBytes(8, 3, picture->GetWidth());
    NvAllocate([&] { mPixels.resize(std::size_t{rowBytes} * picture->GetHeight()); });
    mWidth = picture->GetWidth();
    mHeight = picture->GetHeight();
    picture->ReadColors({0, 0, static_cast<std::int32_t>(mWidth), static_cast<std::int32_t>(mHeight)},
                        {mPixels.data(), rowBytes, {0, 0}, {3, 2, 1, 0}});
}
