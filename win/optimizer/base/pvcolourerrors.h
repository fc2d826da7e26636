#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/** How far each colour of an animation is from what a smaller palette shows in its place. Colours are as
 *  NvPackColor has them; their top byte does not count. */
class PvColourErrors {
public:
    /** Notes what a frame shows instead of a colour. Of several errors the largest counts. */
    void Add(std::uint32_t inColour, std::uint32_t inShown);

    /** Takes over what colours suffered in an earlier step, each with inMore levels on top. */
    void AddAll(const PvColourErrors& inOther, std::uint32_t inMore);

    /** Makes all that was added known to Find and GetLargest. */
    void Settle();

    /** The largest error of a channel, 0 to 255; 0 for colours never added. */
    std::uint32_t Find(std::uint32_t inColour) const;

    /** The largest error of any colour. */
    std::uint32_t GetLargest() const;

private:
    void AddError(std::uint32_t inColour, std::uint32_t inError);

    // A colour in the upper three bytes, its error in the lowest.
    std::vector<std::uint32_t> mErrors; // rising, one a colour, up to mSettled; then as they were added
    std::size_t mSettled = 0;
};
