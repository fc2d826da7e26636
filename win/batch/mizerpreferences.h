#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/** A number that the preferences store keeps between runs. */
struct MizerPreference {
    const char* mName;
    const char* mMeaning;
    std::uint32_t mDefault; ///< when nothing is stored
    std::uint32_t mLargest; ///< 1 for a switch
};

/** All of them, the switches first. */
std::span<const MizerPreference> MizerGetPreferences();

/** @return null when there is none of that name */
const MizerPreference* MizerFindPreference(std::string_view inName);
