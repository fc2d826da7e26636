#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "nvcode2/nvgifframe.h"
#include "nvcode2/nvgifinfo.h"

/** A GIF in memory: its frames in order, the record they share, and the screen they are placed on.
 *
 *  A single image is an animation of one frame. The animation owns its frames; the global record is shared
 * with the file it was read from or is written to. */
class NvAnimation {
public:
    /** @param inInfo    the shared record, not null
     *  @param inWidth   of the logical screen, pixels
     *  @param inHeight  of the logical screen, pixels */
    NvAnimation(std::shared_ptr<NvGIFGlobalInfo> inInfo, std::uint32_t inWidth, std::uint32_t inHeight);

    std::uint32_t GetFrameCount() const { return static_cast<std::uint32_t>(mFrames.size()); }
    /** Precondition: inIndex < GetFrameCount(). */
    NvGIFFrame& GetFrame(std::uint32_t inIndex);
    const NvGIFFrame& GetFrame(std::uint32_t inIndex) const;
    void AddFrame(std::unique_ptr<NvGIFFrame> inFrame);
    /** Puts another frame, not null, in a frame's place; the old one is destroyed. */
    void ReplaceFrame(std::uint32_t inIndex, std::unique_ptr<NvGIFFrame> inFrame);

    NvGIFGlobalInfo& GetGlobalInfo() { return *mGlobalInfo; }
    const NvGIFGlobalInfo& GetGlobalInfo() const { return *mGlobalInfo; }
    std::shared_ptr<NvGIFGlobalInfo> ShareGlobalInfo() const { return mGlobalInfo; }

    std::uint32_t GetScreenWidth() const { return mScreenWidth; }
    std::uint32_t GetScreenHeight() const { return mScreenHeight; }

    /** The shared colour table for a frame that uses it, null for one with a local table. */
    NvColorTable* GetSharedTableOf(const NvGIFFrame& inFrame);

    // Frames in order, for loops over all of them.
    auto begin() { return FrameIterator{mFrames.begin()}; }
    auto end() { return FrameIterator{mFrames.end()}; }
    auto begin() const { return ConstFrameIterator{mFrames.begin()}; }
    auto end() const { return ConstFrameIterator{mFrames.end()}; }

private:
    using Frames = std::vector<std::unique_ptr<NvGIFFrame>>;

    struct FrameIterator {
        Frames::iterator mPosition;
        NvGIFFrame& operator*() const { return **mPosition; }
        FrameIterator& operator++() {
            ++mPosition;
            return *this;
        }
        bool operator==(const FrameIterator&) const = default;
    };
    struct ConstFrameIterator {
        Frames::const_iterator mPosition;
        const NvGIFFrame& operator*() const { return **mPosition; }
        ConstFrameIterator& operator++() {
            ++mPosition;
            return *this;
        }
        bool operator==(const ConstFrameIterator&) const = default;
    };

    std::shared_ptr<NvGIFGlobalInfo> mGlobalInfo;
    std::uint32_t mScreenWidth;
    std::uint32_t mScreenHeight;
    Frames mFrames;
};
