#pragma once

#include <cstdint>
#include <vector>

class NvGIFPlayer;

/** What a movie shows, as a bitmap for a screen: three bytes per pixel, blue first, the bottom row first,
 * each row padded to a multiple of 4 bytes. What is transparent shows a chessboard. Empty for a screen
 * without pixels. */
class GIFPicture {
public:
    /** Makes it anew, of the screen's proportions: reduced into a box, or, where there is room, enlarged.
     *  @param inBoxWidth, inBoxHeight  pixels, not 0
     *  @param inLargest                times the screen's size, at least 1
     *  @throws NvErrorCode  2; the picture is empty then */
    void Render(const NvGIFPlayer& inPlayer, std::uint32_t inBoxWidth, std::uint32_t inBoxHeight,
                double inLargest);

    std::uint32_t GetWidth() const { return mWidth; }
    std::uint32_t GetHeight() const { return mHeight; }
    const std::uint8_t* GetPixels() const { return mPixels.data(); }

private:
    std::vector<std::uint8_t> mPixels;
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
};
