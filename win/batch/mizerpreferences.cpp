#include "win/batch/mizerpreferences.h"

#include <algorithm>
#include <array>

namespace {

constexpr auto km_Preferences = std::to_array<MizerPreference>({
    {"BACKUP", "keep the original as NAME.BAK", 1, 1},
    {"OBACK", "replace backups that exist", 0, 1},
    {"ALLOWCROP", "cut transparent borders off single images", 0, 1},
    {"LOSSLESS", "change no displayed colour", 0, 1},
    {"LOG", "write the results log", 1, 1},
    {"LOGALL", "log unchanged files too", 1, 1},
    {"BYTESSAVED", "bytes saved to date", 0, UINT32_MAX},
    {"FILESPROCESSED", "files processed to date", 0, UINT32_MAX},
});

} // namespace

std::span<const MizerPreference> MizerGetPreferences() {
    return km_Preferences;
}

const MizerPreference* MizerFindPreference(std::string_view inName) {
    const auto found = std::find_if(km_Preferences.begin(), km_Preferences.end(),
                                    [&](const MizerPreference& inEntry) { return inName == inEntry.mName; });
    return found == km_Preferences.end() ? nullptr : &*found;
}
