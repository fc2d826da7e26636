#pragma once

#include <cstdint>

/** What is wrong with a frame's image data. */
enum class NvDataDamage : std::uint8_t {
    km_None,
    km_EndsEarly, ///< it yields fewer pixels than the frame has
    km_RunsOver,  ///< it yields more
    km_Undefined, ///< it holds a code that nothing was assigned to, or that can have no meaning
};

/** The frame of a file whose data have something wrong. */
struct NvGIFDamage {
    std::uint32_t mFrame = 0; ///< counted from 1; 0: none
    NvDataDamage mKind = NvDataDamage::km_None;
};
