#pragma once

#include <cstdint>

/** How close one displayed frame looks to another. */
struct PvFrameLook {
    double mSsim = 1.0; ///< mean structural similarity of luma, 1.0 for the same picture
    double mContrastSsim =
        1.0; ///< the same over the windows that show something in either frame; 1.0 without any
    std::uint32_t mContrastWindows =
        0;                       ///< how many windows those are; each stands for 4 x 4 pixels of its own
    double mPsnr = km_MaxPsnr;   ///< decibels over red, green and blue of the pixels covered in both
    std::uint32_t mMaxError = 0; ///< largest difference of a channel, 0 to 255

    static constexpr double km_MaxPsnr = 99.0; ///< stands for no difference at all
};
