#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/quant/nvquantremap.h"

class NvLZWStringTable;

/** A GIF frame at rest: its record, its colours, and its pixels LZW-packed, which takes a tenth of their
 *  memory in most animations.
 *
 *  Undrawn pixels are packed under an index that no drawn one has, so they need no mask. A frame without such
 *  an index, and one that would not get smaller, is kept as it is. */
class NvPackedFrame {
public:
    /** @param inFrame    taken over
     *  @param ioStrings  to work with; whatever it holds is lost
     *  @throws NvErrorCode  2 */
    NvPackedFrame(std::unique_ptr<NvGIFFrame> inFrame, NvLZWStringTable& ioStrings);

    /** The frame again; its undrawn pixels all have one index, the transparent one where that may be. */
    std::unique_ptr<NvGIFFrame> Unpack() const;

    /** The frame in other colours. Transparency fields are for the caller to bring up to date.
     *
     *  @param inMap           the entry of inTable for every index the frame draws with
     *  @param inTable         becomes the frame's
     *  @param inUndrawnIndex  of its undrawn pixels from now on; no drawn pixel gets it, unless there are
     *  drawn ones of all 256 */
    std::unique_ptr<NvGIFFrame> Unpack(const NvIndexMap& inMap, const NvColorTable& inTable,
                                       std::uint8_t inUndrawnIndex) const;

    const NvGIFFrameInfo& GetInfo() const { return *mInfo; }
    const NvColorTable& GetColorTable() const { return mColorTable; }
    /** Drawn pixels per index. */
    const NvGIFFrame::Histogram& GetHistogram() const { return mHistogram; }
    bool IsFullyDrawn() const { return mIsFullyDrawn; }
    /** Codes that LZW needs for the pixels. */
    std::uint64_t GetCodeCount() const { return mCodeCount; }

private:
    std::unique_ptr<NvGIFFrame> CopyWhole(const NvIndexMap& inMap, const NvColorTable& inTable,
                                          std::uint8_t inUndrawnIndex) const;
    void Pack(const std::uint8_t* inPixels, std::size_t inCount, std::size_t inMostKept,
              NvLZWStringTable& ioStrings);
    void UnpackTo(std::uint8_t* outPixels, const NvIndexMap& inMap) const;

    std::unique_ptr<NvGIFFrameInfo> mInfo;
    NvColorTable mColorTable;
    NvGIFFrame::Histogram mHistogram{};
    bool mIsFullyDrawn;
    std::uint8_t mUndrawnIndex = 0;
    std::uint64_t mCodeCount = 0;
    std::vector<std::uint16_t> mCodes;  // a new table whenever one is full, no clear codes
    std::unique_ptr<NvGIFFrame> mWhole; // instead of codes
};
