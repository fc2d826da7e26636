#include "tests/support/swapreference.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <unordered_map>

std::uint64_t SwapReference::Estimate() const {
    std::uint32_t minimum = 2;
    while (1U << minimum < mColors.size())
        ++minimum;
    std::vector<std::uint8_t> stream;
    const auto addRows = [&](std::uint32_t inStart, std::uint32_t inStep) {
        for (std::uint32_t y = inStart; y < mHeight; y += inStep)
            stream.insert(stream.end(), mPixels.begin() + y * mWidth, mPixels.begin() + (y + 1) * mWidth);
    };
    if (mInterlaced) {
        addRows(0, 8);
        addRows(4, 8);
        addRows(2, 4);
        addRows(1, 2);
    } else {
        addRows(0, 1);
    }

    std::unordered_map<std::uint32_t, std::uint32_t> strings; // prefix code and pixel
    std::uint32_t width = minimum + 1;
    std::uint32_t widthBefore = width;
    std::uint32_t next = (1U << minimum) + 2;
    std::uint64_t bits = 0;
    const auto emit = [&] {
        bits += widthBefore;
        widthBefore = width;
    };
    emit();
    std::uint32_t prefix = stream.at(0);
    for (std::size_t i = 1; i < stream.size(); ++i) {
        const std::uint32_t key = prefix << 8 | stream[i];
        if (const auto found = strings.find(key); found != strings.end()) {
            prefix = found->second;
            continue;
        }
        strings[key] = next++;
        emit();
        if (next == 1U << width) {
            if (width < 12) {
                ++width;
            } else {
                widthBefore = 12;
                strings.clear();
                width = minimum + 1;
                next = (1U << minimum) + 2;
                emit();
            }
        }
        prefix = stream[i];
    }
    emit();
    emit();
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

std::uint64_t CountLZWBits(const std::string& inStream) {
    const auto byteAt = [&](std::size_t inAt) { return static_cast<unsigned char>(inStream.at(inAt)); };
    const std::uint32_t minimum = byteAt(0);
    std::vector<bool> bits;
    for (std::size_t at = 1; byteAt(at) != 0; at += byteAt(at) + 1U)
        for (std::size_t i = 1; i <= byteAt(at); ++i)
            for (int bit = 0; bit < 8; ++bit)
                bits.push_back(byteAt(at + i) >> bit & 1);

    const std::uint32_t clear = 1U << minimum;
    std::uint32_t width = minimum + 1;
    std::uint32_t next = clear + 1; // the first code after a clear defines none
    for (std::size_t at = 0; at + width <= bits.size();) {
        std::uint32_t code = 0;
        for (std::uint32_t i = 0; i < width; ++i)
            code |= static_cast<std::uint32_t>(bits[at + i]) << i;
        at += width;
        if (code == clear + 1)
            return at;
        if (code == clear) {
            width = minimum + 1;
            next = clear + 1;
        } else if (++next == 1U << width && width < 12) {
            ++width;
        }
    }
    return 0;
}
