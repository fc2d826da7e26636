#include <span>

#include "tests/support/lzwreference.h"
#include "tests/support/testgif.h"

namespace {

constexpr std::size_t km_MostPixels = 1 << 26;

/** Goes through a file's bytes; behind their end it reads zeros and knows. */
class Cursor {
public:
    explicit Cursor(const std::string& inBytes) : mBytes(inBytes) {}

    std::uint32_t Byte() {
        mIsCut = mIsCut || IsAtEnd();
        return mIsCut ? 0 : static_cast<unsigned char>(mBytes[mPosition++]);
    }
    std::uint32_t Word() {
        const std::uint32_t low = Byte();
        return low | Byte() << 8;
    }
    TestTable Table(std::uint32_t inPacked) {
        TestTable table(inPacked & 0x80 ? std::size_t{2} << (inPacked & 7) : 0);
        for (std::uint32_t& color : table)
            for (int i = 0; i < 3; ++i)
                color = color << 8 | Byte();
        return table;
    }
    /** Data sub-blocks up to their terminator. */
    std::vector<std::string> Blocks() {
        std::vector<std::string> blocks;
        while (const std::uint32_t length = Byte()) {
            std::string& block = blocks.emplace_back();
            for (std::uint32_t i = 0; i < length; ++i)
                block += static_cast<char>(Byte());
        }
        return blocks;
    }
    std::string From(std::size_t inStart) const { return mBytes.substr(inStart, mPosition - inStart); }
    std::size_t Position() const { return mPosition; }
    bool IsAtEnd() const { return mPosition >= mBytes.size(); }
    bool IsCut() const { return mIsCut; }

private:
    const std::string& mBytes;
    std::size_t mPosition = 0;
    bool mIsCut = false;
};

std::uint32_t WordAt(const std::string& inBytes, std::size_t inPosition) {
    return static_cast<unsigned char>(inBytes[inPosition]) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(inBytes[inPosition + 1])) << 8;
}

/** @param ioNext  what the last graphic control says of the next frame, damaged when it makes no sense */
void ReadExtension(Cursor& ioCursor, TestGIF& ioGIF, TestFrame& ioNext) {
    const std::uint32_t label = ioCursor.Byte();
    const std::vector<std::string> blocks = ioCursor.Blocks();
    if (label == 0xFE) {
        std::string& comment = ioGIF.mComments.emplace_back();
        for (const std::string& block : blocks)
            comment += block;
        if (comment.empty())
            ioGIF.mComments.pop_back();
    } else if (label == 0xF9) {
        ioNext.mIsDamaged = blocks.empty() || blocks[0].size() != 4;
        if (ioNext.mIsDamaged)
            return;
        const auto packed = static_cast<unsigned char>(blocks[0][0]);
        ioNext.mDisposal = packed >> 2 & 7U;
        ioNext.mUserInput = packed & 2;
        ioNext.mDelay = WordAt(blocks[0], 1);
        ioNext.mTransparent = packed & 1 ? static_cast<unsigned char>(blocks[0][3]) : -1;
    } else if (label == 0xFF && !blocks.empty() &&
               (blocks[0] == "NETSCAPE2.0" || blocks[0] == "ANIMEXTS1.0")) {
        for (const std::string& block : std::span(blocks).subspan(1))
            if (block.size() >= 3 && block[0] == 1)
                ioGIF.mLoop = WordAt(block, 1);
    }
}

/** @param ioFrame  holds what the graphic control said */
/** A frame too large for anyone to compare goes without pixels. */
bool ReadFrame(Cursor& ioCursor, const TestGIF& inGIF, TestFrame& ioFrame) {
    for (std::uint32_t* field : {&ioFrame.mLeft, &ioFrame.mTop, &ioFrame.mWidth, &ioFrame.mHeight})
        *field = ioCursor.Word();
    const std::uint32_t packed = ioCursor.Byte();
    ioFrame.mInterlaced = packed & 0x40;
    ioFrame.mLocalTable = ioCursor.Table(packed);
    const std::size_t start = ioCursor.Position();
    ioCursor.Byte();
    ioCursor.Blocks();
    if (ioFrame.mIsDamaged || ioCursor.IsCut() || ioFrame.mWidth == 0 || ioFrame.mHeight == 0 ||
        inGIF.TableOf(ioFrame).empty())
        return false;
    const std::size_t count = std::size_t{ioFrame.mWidth} * ioFrame.mHeight;
    const LZWDecoded decoded = ReferenceLZWDecode(ioCursor.From(start), count);
    ioFrame.mIsDamaged = decoded.mError != 0 || decoded.mIsUndefined || decoded.mRunsOver;
    if (decoded.mSound < count)
        ioFrame.mDelivered = decoded.mSound;
    if (count > km_MostPixels)
        return true;
    ioFrame.mPixels.resize(count);
    std::size_t at = 0;
    for (const std::uint32_t y : FileOrder(ioFrame.mHeight, ioFrame.mInterlaced))
        for (std::uint32_t x = 0; x < ioFrame.mWidth && at < decoded.mSound; ++x)
            ioFrame.mPixels[y * ioFrame.mWidth + x] = decoded.mPixels[at++];
    return true;
}

} // namespace

std::optional<TestGIF> PlainReadGIF(const std::string& inBytes) {
    if (!inBytes.starts_with("GIF87a") && !inBytes.starts_with("GIF89a"))
        return std::nullopt;
    const std::string rest = inBytes.substr(6);
    Cursor cursor(rest);
    TestGIF gif;
    gif.mWidth = cursor.Word();
    gif.mHeight = cursor.Word();
    const std::uint32_t packed = cursor.Byte();
    gif.mBackground = static_cast<std::uint8_t>(cursor.Byte());
    gif.mAspect = static_cast<std::uint8_t>(cursor.Byte());
    gif.mTable = cursor.Table(packed);
    TestFrame next;
    while (!cursor.IsAtEnd() || gif.mFrames.empty()) {
        const std::uint32_t introducer = cursor.Byte();
        if (introducer == ';')
            break;
        bool isSound = introducer == 0;
        if (introducer == '!') {
            isSound = true;
            ReadExtension(cursor, gif, next);
        } else if (introducer == ',') {
            isSound = ReadFrame(cursor, gif, next);
            gif.mFrames.push_back(next);
            next = TestFrame();
        }
        if (!isSound || cursor.IsCut())
            return std::nullopt;
    }
    return gif.mWidth == 0 || gif.mHeight == 0 || gif.mFrames.empty() ? std::nullopt : std::optional(gif);
}
