#pragma once

#include <memory>

#include "nvcode2/image/nvcolortable.h"

/** What an image file says beyond its pixels. Each format derives its records from these two and adds its own
 *  fields; its reader fills them, its writer writes them back. */

/** Once per file: the palette shared by the file's images. */
class NvImgFmtGlobalInfo {
public:
    NvImgFmtGlobalInfo() = default;
    virtual ~NvImgFmtGlobalInfo() = default;

    NvColorTable mColorTable;

protected:
    NvImgFmtGlobalInfo(const NvImgFmtGlobalInfo&) = default;
    NvImgFmtGlobalInfo& operator=(const NvImgFmtGlobalInfo&) = default;
};

/** Once per image: the palette of that image alone, empty when it uses the shared one. */
class NvImgFmtFrameInfo {
public:
    NvImgFmtFrameInfo() = default;
    virtual ~NvImgFmtFrameInfo() = default;

    /** A record of the same class with the same contents. */
    virtual std::unique_ptr<NvImgFmtFrameInfo> Clone() const = 0;

    NvColorTable mColorTable;

protected:
    NvImgFmtFrameInfo(const NvImgFmtFrameInfo&) = default;
    NvImgFmtFrameInfo& operator=(const NvImgFmtFrameInfo&) = default;
};
