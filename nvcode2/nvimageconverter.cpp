#include "nvcode2/nvimageconverter.h"

#include "nvcode2/nvallocate.h"
#include "nvcode2/nvbitmapimage.h"
#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvmakeinvcolormap.h"

NvRGBImage NvImageConverter::ToRGB(const NvRealImage& inImage) const {
    NvRGBImage image(inImage.GetWidth(), inImage.GetHeight());
    if (!image.IsAllocated())
        return image;
    const NvPixelLock pixels(image);
    NvRect row = inImage.GetBounds();
    const std::int32_t height = row.bottom;
    for (row.bottom = 1; row.top < height; ++row.top, ++row.bottom) {
        const auto y = static_cast<std::uint32_t>(row.top);
        inImage.ReadRGB(row, pixels.Row(y), image.GetRowBytes(), {});
        NvReportProgress(mIndicator, y + 1, image.GetHeight());
    }
    return image;
}

NvIndexedImage NvImageConverter::ToIndexed(const NvRealImage& inImage, const NvColorTable& inTable) const {
    const auto inverseMap = NvMakeArray<std::uint8_t>(km_InverseColorMapSize);
    MakeInverseColorMap(&inTable, inverseMap.get());

    NvIndexedImage image;
    switch (inImage.GetImageType()) {
    case NvImage::km_RGBImage:
        return static_cast<const NvRGBImage&>(inImage).ToIndexed(inTable, inverseMap.get(), mIndicator);
    case NvImage::km_BitmapImage:
        image = static_cast<const NvBitmapImage&>(inImage).ToIndexed({0, 0, 0}, {255, 255, 255});
        break;
    case NvImage::km_IndexedImage:
        image.CopyFrom(inImage);
        break;
    default:
        NvThrow(NvErrorCode::km_NotSupported);
    }
    if (!(image.GetColorTable() == inTable))
        image.MapToTable(&inTable, inverseMap.get());
    return image;
}
