#pragma once

#include <cstdint>

#include "nvcode2/base/nvgeometry.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvrgbimage.h"

class NvProgressIndicator;

/** What shows where a picture is transparent: a chessboard of two colours, the first at the top left. Equal
 *  colours make it plain. */
struct NvBackdrop {
    NvColor mFirst{255, 255, 255};
    NvColor mSecond{216, 216, 216};
    std::uint32_t mSquare = 8; ///< pixels along a side, not 0

    /** The colour at column inX, row inY of the thumbnail. */
    NvColor At(std::uint32_t inX, std::uint32_t inY) const {
        return (inX / mSquare + inY / mSquare) % 2 == 0 ? mFirst : mSecond;
    }
};

/** Makes small still pictures of what an animation displays, for people to look at.
 *
 *  A thumbnail is the whole screen, reduced by area average until it fits a box, with the proportions of its
 *  pixels. What fits already stays as it is: nothing is ever enlarged. The side that is longer in proportion
 *  to the box fills it exactly; the other is rounded to nearest and at least 1. The pixel aspect ratio that a
 *  file may ask for is ignored, as browsers do.
 *
 *  The backdrop is laid behind the finished thumbnail, so its squares stay whole at any reduction. It shines
 *  through to the degree that the averaged pixels were transparent. */
class NvThumbnail {
public:
    /** @param inBoxWidth, inBoxHeight  pixels, not 0 */
    NvThumbnail(std::uint32_t inBoxWidth, std::uint32_t inBoxHeight, const NvBackdrop& inBackdrop = {});

    /** The thumbnail's rectangle, with its top left at 0, 0, for a screen of at least one pixel. */
    NvRect Fit(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight) const;

    /** What the player displays now. To see a certain frame, play up to it.
     *
     *  @param inIndicator   informed of every row; may stop the work; may be null
     *  @throws NvErrorCode  3 when it does, 2 */
    NvRGBImage Render(const NvGIFPlayer& inPlayer, NvProgressIndicator* inIndicator = nullptr) const;

private:
    std::uint32_t mBoxWidth;
    std::uint32_t mBoxHeight;
    NvBackdrop mBackdrop;
};
