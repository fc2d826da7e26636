#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/quant/nvquantremap.h"

class NvLZWStringTable;

/** A GIF frame at rest: its record, its colours, and its pixels LZW-packed, in most animations into a tenth
 * of their memory.
 *
 *  Undrawn pixels are packed under an index that no drawn one has, so they need no mask. A frame is kept as
 * it is when there is no such index, or when packing would not make it smaller. */
class NvPackedFrame {
public:
    /** @param inFrame    taken over
     *  @param ioStrings  scratch memory; what it holds is lost
     *  @throws NvErrorCode  2 */
    NvPackedFrame(std::unique_ptr<NvGIFFrame> inFrame, NvLZWStringTable& ioStrings);

    /** The frame again; its undrawn pixels all have one index, the transparent one where that may be. */
    std::unique_ptr<NvGIFFrame> Unpack() const;

    /** The frame in other colours. Transparency fields are for the caller to bring up to date.
     *
     *  @param inMap           the entry of inTable for every index the frame draws with
     *  @param inTable         becomes the frame's
     *  @param inUndrawnIndex  for its undrawn pixels; inMap gives it to no drawn one, unless drawn pixels
     * have all 256 indices */
    std::unique_ptr<NvGIFFrame> Unpack(const NvIndexMap& inMap, const NvColorTable& inTable,
                                       std::uint8_t inUndrawnIndex) const;

    const NvGIFFrameInfo& GetInfo() const { return *mInfo; }
    const NvColorTable& GetColorTable() const { return mColorTable; }
    /** Drawn pixels per index. */
    const NvHistogram& GetHistogram() const { return mHistogram; }
    bool IsFullyDrawn() const { return mIsFullyDrawn; }
    /** LZW codes that the pixels take. */
    std::uint64_t GetCodeCount() const { return mCodeCount; }
    /** Whether those are the codes of its LZW data, as a file stores them row by row, in any colours that
     * stay apart: they fit every string table. */
    bool HasFewCodes() const;
    /** Bytes that the frame takes. */
    std::uint64_t GetMemory() const;

private:
    std::unique_ptr<NvGIFFrame> CopyWhole(const NvIndexMap& inMap, const NvColorTable& inTable,
                                          std::uint8_t inUndrawnIndex) const;
    void Pack(const std::uint8_t* inPixels, std::size_t inCount, std::size_t inMostKept,
              NvLZWStringTable& ioStrings);
    void UnpackTo(std::uint8_t* outPixels, const NvIndexMap& inMap) const;

    std::unique_ptr<NvGIFFrameInfo> mInfo;
    NvColorTable mColorTable;
    NvHistogram mHistogram{};
    bool mIsFullyDrawn;
    std::uint8_t mUndrawnIndex = 0;
    std::uint64_t mCodeCount = 0;
    std::vector<std::uint16_t> mCodes;  // a new table whenever one is full, no clear codes
    std::unique_ptr<NvGIFFrame> mWhole; // instead of codes
};
