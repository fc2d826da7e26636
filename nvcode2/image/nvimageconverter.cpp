#include "nvcode2/image/nvimageconverter.h"

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/image/nvbitmapimage.h"
#include "nvcode2/image/nvmakeinvcolormap.h"

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
