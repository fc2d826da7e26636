#pragma once

#include <cstdint>

/** A number among the preferences, and its name. */
struct WnPrefNumber {
    const char* mName;
    std::uint32_t mValue;
};
