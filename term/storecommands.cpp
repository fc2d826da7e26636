#include "term/storecommands.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "term/system/print.h"
#include "term/termshell.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizerpreferences.h"
#include "wnatom/wnpref.h"

namespace {

WnPref OpenPreferences() {
    return WnPref("Parvigif", "1.x");
}

const char* OriginWords(WnPref::Origin inOrigin) {
    switch (inOrigin) {
    case WnPref::Origin::km_Machine:
        return "machine-wide";
    case WnPref::Origin::km_User:
        return "user";
    case WnPref::Origin::km_None:
        break;
    }
    return "built-in";
}

/** Everything that a log needs around it. */
struct LogAccess {
    LogAccess(const TermSettings& inSettings, TermMessages& ioMessages)
        : mResults(inSettings), mShell(inSettings, ioMessages, mResults) {}

    TermResults mResults;
    TermShell mShell;
    WnPref mPrefs = OpenPreferences();
    MizerLog mLog{mPrefs, mShell};
};

} // namespace

void TermStorePreferences(const TermSettings& inSettings, TermMessages& ioMessages) {
    WnPref prefs = OpenPreferences();
    for (const auto& [name, value] : inSettings.mStored) {
        std::uint32_t present = value;
        if (!prefs.WriteDWord(name.c_str(), value))
            ioMessages.Error(name + ": the preferences cannot be written");
        else if (prefs.FindDWord(name.c_str(), present) == WnPref::Origin::km_Machine && present != value)
            ioMessages.Warning(name + ": stored for this user, but the machine-wide " +
                               std::to_string(present) + " holds");
    }
}

void TermListPreferences(TermMessages& ioMessages) {
    const WnPref prefs = OpenPreferences();
    std::string text;
    for (const MizerPreference& preference : MizerGetPreferences()) {
        std::uint32_t value = preference.mDefault;
        const WnPref::Origin origin = prefs.FindDWord(preference.mName, value);
        std::array<char, 128> line{};
        std::snprintf(line.data(), line.size(), "%-26s %-13s %s\n",
                      (std::string(preference.mName) + "=" + std::to_string(value)).c_str(),
                      OriginWords(origin), preference.mMeaning);
        text += line.data();
    }
    TermPrint(text, ioMessages);
}

void TermPrintTotals(TermMessages& ioMessages) {
    const WnPref prefs = OpenPreferences();
    std::uint32_t files = 0;
    std::uint32_t bytes = 0;
    prefs.ReadDWordDefault("FILESPROCESSED", files, 0);
    prefs.ReadDWordDefault("BYTESSAVED", bytes, 0);
    TermPrint(std::to_string(files) + " Files processed to date.\n" + std::to_string(bytes) +
                  " bytes saved\n",
              ioMessages);
}

void TermShowLog(const TermSettings& inSettings, TermMessages& ioMessages) {
    const std::string path = LogAccess(inSettings, ioMessages).mLog.GetPath();
    std::ifstream log(path, std::ios::binary);
    if (!log && errno == ENOENT)
        return ioMessages.Note("there is no results log yet");
    for (std::string line; std::getline(log, line);)
        TermPrint(TermPrintable(line) + "\n", ioMessages);
    if (!log.eof())
        ioMessages.FileError(path, std::strerror(errno));
}

void TermClearLog(const TermSettings& inSettings, TermMessages& ioMessages) {
    if (!LogAccess(inSettings, ioMessages).mLog.ClearLog())
        ioMessages.Error("the results log is as it was");
}
