#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nvcode2/nvgifframe.h"

/** Frames drawn with letters: a digit is a drawn pixel of that index, a dot one that is not drawn. */

inline std::unique_ptr<NvGIFFrame> MakeFrame(const std::vector<std::string>& inRows,
                                             const NvColorTable& inTable, std::uint16_t inLeft = 0,
                                             std::uint16_t inTop = 0) {
    const auto width = static_cast<std::uint32_t>(inRows[0].size());
    const auto height = static_cast<std::uint32_t>(inRows.size());
    NvIndexedImage image(width, height, inTable);
    NvBitmapImage mask(width, height);
    {
        const NvPixelLock pixels(image);
        const NvPixelLock bits(mask);
        for (std::uint32_t y = 0; y < height; ++y)
            for (std::uint32_t x = 0; x < width; ++x)
                if (inRows[y][x] != '.') {
                    pixels.Row(y)[x] = static_cast<std::uint8_t>(inRows[y][x] - '0');
                    NvBitmapImage::SetBit(bits.Row(y), mask.GetRowBytes(), x, 0, 1);
                }
    }
    auto info = std::make_unique<NvGIFFrameInfo>();
    info->mLeft = inLeft;
    info->mTop = inTop;
    info->mWidth = static_cast<std::uint16_t>(width);
    info->mHeight = static_cast<std::uint16_t>(height);
    info->mHasLocalTable = 0;
    return std::make_unique<NvGIFFrame>(std::move(image), std::move(mask), std::move(info));
}

/** The frame in letters again, one string per row. */
inline std::vector<std::string> RowsOf(const NvGIFFrame& inFrame) {
    std::vector<std::string> rows(inFrame.GetHeight(), std::string(inFrame.GetWidth(), '.'));
    const NvConstPixelLock pixels(inFrame.GetImage());
    const NvConstPixelLock bits(inFrame.GetMask());
    for (std::uint32_t y = 0; y < inFrame.GetHeight(); ++y)
        for (std::uint32_t x = 0; x < inFrame.GetWidth(); ++x)
            if (NvBitmapImage::GetBit(bits.Row(y), inFrame.GetMask().GetRowBytes(), x, 0))
                rows[y][x] = static_cast<char>('0' + pixels.Row(y)[x]);
    return rows;
}
