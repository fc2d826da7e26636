#pragma once

#include <cstdint>

#include "nvcode2/base/nverrorcode.h"

/** The code of the NvErrorCode that inAction raises, 0 when it raises none:
 *  EXPECT_EQ(CodeOf([&] { file.Close(); }), 15u); */
template <typename Action>
std::uint32_t CodeOf(Action inAction) {
    try {
        inAction();
    } catch (const NvErrorCode& error) {
        return error.GetCode();
    }
    return NvErrorCode::km_NoError;
}
