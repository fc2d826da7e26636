#include "tests/support/swapreference.h"

#include "tests/support/lzwreference.h"
#include "tests/support/testgif.h"

std::vector<std::uint8_t> SwapReference::Stream() const {
    Indices stream;
    for (const std::uint32_t y : FileOrder(mHeight, mInterlaced))
        stream.insert(stream.end(), mPixels.begin() + y * mWidth, mPixels.begin() + (y + 1) * mWidth);
    return stream;
}

std::uint64_t SwapReference::Estimate() const {
    std::uint64_t bits = 0;
    for (const LZWCode& code :
         ReferenceLZWCodes(static_cast<unsigned>(std::bit_width(mColors.size() - 1)), Stream()))
        bits += code.mBits;
    return bits;
}

int SwapReference::EdgeStrength(std::uint32_t inX, std::uint32_t inY) const {
    int strongest = 0;
    for (const int shift : {16, 8, 0}) {
        const auto at = [&](int inDX, int inDY) {
            const auto x = static_cast<std::uint32_t>(static_cast<int>(inX) + inDX);
            const auto y = static_cast<std::uint32_t>(static_cast<int>(inY) + inDY);
            return static_cast<int>(mColors[mPixels[y * mWidth + x]] >> shift & 0xFF);
        };
        const int gx = at(1, -1) + 2 * at(1, 0) + at(1, 1) - at(-1, -1) - 2 * at(-1, 0) - at(-1, 1);
        const int gy = at(-1, -1) + 2 * at(0, -1) + at(1, -1) - at(-1, 1) - 2 * at(0, 1) - at(1, 1);
        strongest = std::max(strongest, std::min(std::abs(gx) + std::abs(gy), 255));
    }
    return strongest;
}

bool SwapReference::Qualifies(std::uint32_t inX, std::uint32_t inY, int inSpared) const {
    const std::uint8_t* p = &mPixels[inY * mWidth + inX];
    if (p[2] != p[0] || p[1] == p[0] || p[-1] == p[0] || p[0] == inSpared || p[1] == inSpared)
        return false;
    if (EdgeStrength(inX, inY) >= 180 || EdgeStrength(inX + 1, inY) >= 180)
        return false;
    for (const int shift : {16, 8, 0})
        if (std::abs(static_cast<int>(mColors[p[0]] >> shift & 0xFF) -
                     static_cast<int>(mColors[p[1]] >> shift & 0xFF)) > 128)
            return false;
    return true;
}

template <typename Visitor>
void SwapReference::ForEachPlace(Visitor inVisit) {
    if (mWidth <= 4 || mHeight <= 1)
        return;
    for (std::uint32_t y = 1; y + 1 < mHeight; ++y)
        for (std::uint32_t i = 0; i < (mWidth - 3) / 2; ++i)
            inVisit(1 + 2 * i, y);
}

std::uint32_t SwapReference::CountCandidates() const {
    std::uint32_t count = 0;
    SwapReference(*this).ForEachPlace(
        [&](std::uint32_t x, std::uint32_t y) { count += Qualifies(x, y, -1) ? 1 : 0; });
    return count;
}

std::uint32_t SwapReference::Search() {
    std::uint64_t best = Estimate();
    std::uint32_t exchanged = 0;
    ForEachPlace([&](std::uint32_t x, std::uint32_t y) {
        if (!Qualifies(x, y, mTransparent))
            return;
        std::uint8_t* p = &mPixels[y * mWidth + x];
        std::swap(p[0], p[1]);
        const std::uint64_t size = Estimate();
        if (size >= best) {
            std::swap(p[0], p[1]);
            return;
        }
        best = size;
        ++exchanged;
    });
    return exchanged;
}

void SwapReference::PostDither() {
    if (mWidth < 5 || mHeight <= 2)
        return;
    ForEachPlace([&](std::uint32_t x, std::uint32_t y) {
        std::uint8_t* p = &mPixels[y * mWidth + x];
        if (Qualifies(x, y, mTransparent))
            std::swap(p[0], p[1]);
    });
}
