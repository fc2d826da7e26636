#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "nvcode2/base/nvlist.h"
#include "nvcode2/image/nvimgfmtinfo.h"

/** The two records that carry everything a GIF file says beyond its pixels.
 *
 *  The reader fills them, the writer writes them back, the optimizer edits them in between. Fields are as
 * wide as in the file; narrower ranges are noted. */

/** One comment extension: the bytes of all its sub-blocks in a row. */
struct NvGIFComment {
    std::string mText; ///< any bytes, not necessarily text
};

/** The comments of a file, in file order. It owns them; a copy has its own. */
class NvGIFComments : private NvList {
public:
    NvGIFComments() = default;
    NvGIFComments(const NvGIFComments& inOther);
    NvGIFComments& operator=(const NvGIFComments&) = delete;
    ~NvGIFComments();

    /** Adds a comment behind the others. */
    void Append(std::string inText);

    /** Nodes of NvGIFComment; nullptr when there are none. */
    using NvList::GetFirst;

    std::vector<std::string> GetTexts() const;
};

/** What a GIF says once per file. Default-made, every field is zero: an "87a" file without global table, loop
 *  or comments. */
class NvGIFGlobalInfo : public NvImgFmtGlobalInfo {
public:
    /** What a reader starts from: version "89a", colour resolution 8. */
    static std::unique_ptr<NvGIFGlobalInfo> MakeReaderDefault();

    /** The colour that the background index names, black when it names none. */
    NvColor GetBackgroundColor() const;

    std::uint32_t mVersionFlag = 0;       ///< nonzero: "89a", zero: "87a"
    std::uint8_t mHasGlobalTable = 0;     ///< 0 or 1; the table itself is mColorTable
    std::uint8_t mColorResolution = 0;    ///< bits per channel of the original, 1 to 8; 0 when never set
    std::uint16_t mDeclaredTableSize = 0; ///< entries the file declares: 0, or a power of two from 2 to 256
    std::uint8_t mSortFlag = 0;           ///< 0 or 1: the table is ordered by importance
    std::uint8_t mBackgroundIndex = 0;    ///< entry of the global table
    std::uint8_t mHasLoop = 0;            ///< 0 or 1: a looping block was read or is to be written
    std::uint16_t mLoopCount = 0;         ///< 0: forever
    std::uint8_t mAspect = 0;             ///< pixel aspect ratio byte, kept as read
    NvGIFComments mComments;
};

/** What a GIF says once per frame. */
class NvGIFFrameInfo : public NvImgFmtFrameInfo {
public:
    std::unique_ptr<NvImgFmtFrameInfo> Clone() const override;

    /** How the canvas changes before the next frame is drawn. */
    enum Disposal : std::uint32_t {
        km_DisposeUnspecified = 0, ///< shown as km_DisposeLeave
        km_DisposeLeave = 1,       ///< the frame stays
        km_DisposeClear = 2,       ///< the frame's rectangle becomes transparent
        km_DisposeRestore = 3,     ///< what the frame covered comes back
        km_DisposeRestoreOld = 4,  ///< an early misreading of the field's bits, shown as km_DisposeRestore
    };

    std::uint16_t mLeft = 0; ///< pixels from the screen's left edge
    std::uint16_t mTop = 0;  ///< pixels from the screen's top edge
    std::uint16_t mWidth = 0;
    std::uint16_t mHeight = 0;
    std::uint8_t mHasLocalTable = 1;   ///< 0 or 1; the table itself is mColorTable
    std::uint8_t mSortFlag = 0;        ///< 0 or 1
    std::uint8_t mInterlaced = 0;      ///< 0 or 1
    std::uint8_t mMinimumCodeSize = 8; ///< bits, as read or as needed by the colours written
    std::uint8_t mHasGraphicControl =
        1;                             ///< 0 or 1: delay, disposal and transparency are stored with the frame
    std::uint16_t mDelay = 0;          ///< hundredths of a second
    std::uint8_t mUserInput = 0;       ///< 0 or 1: waits for the user
    std::uint32_t mDisposal = 0;       ///< 0 to 7, see Disposal
    std::uint8_t mHasTransparency = 0; ///< 0 or 1
    std::uint8_t mTransparentIndex = 0; ///< the index that is not drawn

    /** Whether the frame's area goes back to what it was before the frame. */
    bool RestoresPrevious() const {
        return mDisposal == km_DisposeRestore || mDisposal == km_DisposeRestoreOld;
    }
};
