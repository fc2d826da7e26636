#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "nvcode2/gif/nvgifinfo.h"
#include "nvcode2/gif/nvpackedframe.h"

/** A GIF in memory: its frames in order, packed, the record they share, and the screen they are placed on.
 *
 *  A still picture is an animation of one frame. */
class NvAnimation {
public:
    /** @param inInfo    the shared record, not null
     *  @param inWidth   of the logical screen, pixels
     *  @param inHeight  of the logical screen, pixels */
    NvAnimation(std::shared_ptr<NvGIFGlobalInfo> inInfo, std::uint32_t inWidth, std::uint32_t inHeight);

    void AddFrame(NvPackedFrame inFrame);

    std::uint32_t GetFrameCount() const { return static_cast<std::uint32_t>(mFrames.size()); }
    /** A frame at rest. Precondition, as below: inIndex < GetFrameCount(). */
    const NvPackedFrame& GetPackedFrame(std::uint32_t inIndex) const;
    /** A frame, unpacked to work on. */
    std::unique_ptr<NvGIFFrame> GetFrame(std::uint32_t inIndex) const;

    /** Bytes that the frames take. */
    std::uint64_t GetMemory() const { return mMemory; }

    NvGIFGlobalInfo& GetGlobalInfo() { return *mGlobalInfo; }
    const NvGIFGlobalInfo& GetGlobalInfo() const { return *mGlobalInfo; }
    std::shared_ptr<NvGIFGlobalInfo> ShareGlobalInfo() const { return mGlobalInfo; }

    std::uint32_t GetScreenWidth() const { return mScreenWidth; }
    std::uint32_t GetScreenHeight() const { return mScreenHeight; }

private:
    std::shared_ptr<NvGIFGlobalInfo> mGlobalInfo;
    std::uint32_t mScreenWidth;
    std::uint32_t mScreenHeight;
    std::vector<NvPackedFrame> mFrames;
    std::uint64_t mMemory = 0;
};
