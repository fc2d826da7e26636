#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvindexedimage.h"
#include "nvcode2/image/nvrealimage.h"

class NvProgressIndicator;

/** A true-colour image: red, green and blue bytes per pixel, rows without padding.
 *
 *  Thumbnails and contact sheets are put together in it; the optimizer works on indices alone. */
class NvRGBImage : public NvRealImage {
public:
    /** 0 by 0 pixels. */
    NvRGBImage();
    /** Every pixel black. */
    NvRGBImage(std::uint32_t inWidth, std::uint32_t inHeight);
    NvRGBImage(NvRGBImage&& ioImage) noexcept = default;
    NvRGBImage& operator=(NvRGBImage&& ioImage) noexcept = default;

    std::unique_ptr<NvImage> Clone() const override;
    void ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                 const NvRGBLayout& inLayout) const override;
    std::unique_ptr<NvImage> NewBlankImage(const NvRect& inRect) const override;
    void CopyFrom(const NvImage& inImage) override;
    void Invert() override;
    std::unique_ptr<NvImage> NewResizedImage(std::uint32_t inWidth, std::uint32_t inHeight,
                                             NvProgressIndicator* inIndicator) const override;

    /** The picture in a palette's colours, each pixel in the one its cell of the inverse map names.
     *
     *  @param inTable      the palette, at least one entry
     *  @param inInvMap     its map, see MakeInverseColorMap
     *  @param inIndicator  informed of every row; may stop the work with code 3; may be null */
    virtual NvIndexedImage ToIndexed(const NvColorTable& inTable, const std::uint8_t* inInvMap,
                                     NvProgressIndicator* inIndicator) const;
};
