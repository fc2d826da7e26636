#pragma once

// What nearly every test needs.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nvcode2/base/nverrorcode.h"
#include "tests/support/testfolder.h"

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
