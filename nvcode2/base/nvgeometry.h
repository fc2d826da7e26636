#pragma once

#include <algorithm>
#include <cstdint>

/** A pixel position: column h, row v, counted from the top left. */
struct NvPoint {
    std::int32_t h = 0;
    std::int32_t v = 0;

    bool operator==(const NvPoint&) const = default;
};

/** A pixel rectangle; right and bottom are exclusive. */
struct NvRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    std::int32_t Width() const { return right - left; }
    std::int32_t Height() const { return bottom - top; }
    bool IsEmpty() const { return left >= right || top >= bottom; }

    bool operator==(const NvRect&) const = default;
};

/** The smallest rectangle that holds both. Neither may be empty. */
inline NvRect NvUnionRect(const NvRect& inFirst, const NvRect& inSecond) {
    return {std::min(inFirst.left, inSecond.left), std::min(inFirst.top, inSecond.top),
            std::max(inFirst.right, inSecond.right), std::max(inFirst.bottom, inSecond.bottom)};
}
