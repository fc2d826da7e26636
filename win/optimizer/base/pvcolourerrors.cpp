#include "win/optimizer/base/pvcolourerrors.h"

#include <algorithm>

void PvColourErrors::Add(std::uint32_t inColour, std::uint32_t inShown) {
    std::uint32_t error = 0;
    for (const std::uint32_t shift : {0U, 8U, 16U}) {
        const std::uint32_t colour = inColour >> shift & 0xFF;
        const std::uint32_t shown = inShown >> shift & 0xFF;
        error = std::max(error, std::max(colour, shown) - std::min(colour, shown));
    }
    AddError(inColour, error);
}

void PvColourErrors::AddAll(const PvColourErrors& inOther, std::uint32_t inMore) {
    for (const std::uint32_t entry : inOther.mErrors)
        AddError(entry >> 8, std::min((entry & 0xFF) + inMore, 255U));
}

void PvColourErrors::AddError(std::uint32_t inColour, std::uint32_t inError) {
    if (inError == 0)
        return;
    mErrors.push_back(inColour << 8 | inError);
    constexpr std::size_t km_ToSettle = 4096; // frames that share their colours must not add up
    if (mErrors.size() > 2 * mSettled + km_ToSettle)
        Settle();
}

void PvColourErrors::Settle() {
    std::sort(mErrors.begin(), mErrors.end());
    const auto sameColour = [](std::uint32_t inLeft, std::uint32_t inRight) {
        return inLeft >> 8 == inRight >> 8;
    };
    // Of each colour the last and largest error stays.
    const auto kept = std::unique(mErrors.rbegin(), mErrors.rend(), sameColour);
    mErrors.erase(mErrors.begin(), kept.base());
    mSettled = mErrors.size();
}

std::uint32_t PvColourErrors::Find(std::uint32_t inColour) const {
    const auto found = std::lower_bound(mErrors.begin(), mErrors.end(), inColour << 8);
    return found != mErrors.end() && *found >> 8 == (inColour & 0xFFFFFF) ? *found & 0xFF : 0;
}

std::uint32_t PvColourErrors::GetLargest() const {
    std::uint32_t largest = 0;
    for (const std::uint32_t entry : mErrors)
        largest = std::max(largest, entry & 0xFF);
    return largest;
}
