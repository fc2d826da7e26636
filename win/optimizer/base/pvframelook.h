#pragma once

#include <cstdint>

/** How close one displayed frame looks to another. */
struct PvFrameLook {
    static constexpr double km_MaxPsnr = 99.0; ///< stands for no difference at all

    /** Mean structural similarity of luma, 1.0 for the same picture. */
    double mSsim = 1.0;

    /** The same over the windows that show something in either frame; 1.0 without any. */
    double mContrastSsim = 1.0;

    /** The number of those windows; each stands for 4 x 4 pixels of its own. */
    std::uint32_t mContrastWindows = 0;

    /** Decibels over red, green and blue of the pixels covered in both. */
    double mPsnr = km_MaxPsnr;

    /** The largest difference of a channel, 0 to 255. */
    std::uint32_t mMaxError = 0;
};
