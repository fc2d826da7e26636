#include "term/commands.h"
#include "term/preferences.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "term/system/print.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizerpreferences.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsystem.h"

namespace {

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

MizerLog MakeLog(TermMessages& ioMessages) {
    return MizerLog(
        {&WnGetDataFolder, [&](const std::string& text, const char*) { ioMessages.Warning(text); }});
}

} // namespace

WnPref TermOpenPreferences(const TermSettings& inSettings) {
    WnPref prefs = MizerOpenPreferences();
    for (const auto& [name, value] : inSettings.mPreferences)
        prefs.Override(name.c_str(), value);
    return prefs;
}

WnPref TermOpenPreferences(const TermSettings& inSettings, TermMessages& ioMessages) {
    WnPref prefs = TermOpenPreferences(inSettings);
    for (const std::string& path : prefs.FindOversized())
        ioMessages.Warning(TermPrintable(path) + ": ignored: a file of preferences is smaller than 1 MiB");
    return prefs;
}

void TermStorePreferences(const TermSettings& inSettings, TermMessages& ioMessages) {
    WnPref prefs = MizerOpenPreferences();
    for (const auto& [name, value] : inSettings.mStored) {
        std::uint32_t present = value;
        if (!prefs.WriteDWord(name.c_str(), value))
            ioMessages.Error(name + ": the preferences cannot be written");
        else if (prefs.FindDWord(name.c_str(), present) == WnPref::Origin::km_Machine && present != value)
            ioMessages.Warning(name + ": stored for this user, but the machine-wide " +
                               std::to_string(present) + " holds");
    }
}

void TermListPreferences(const TermSettings& inSettings, TermMessages& ioMessages) {
    const WnPref prefs = TermOpenPreferences(inSettings, ioMessages);
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
    const WnPref prefs = MizerOpenPreferences();
    const auto read = [&](const char* name) {
        return std::to_string(MizerFindPreference(name)->Read(prefs));
    };
    TermPrint(PvSay(PvText::km_FilesToDate, {read("FILESPROCESSED")}) + "\n" +
                  PvSay(PvText::km_BytesSaved, {read("BYTESSAVED")}) + "\n",
              ioMessages);
}

void TermResetTotals(TermMessages& ioMessages) {
    WnPref prefs = MizerOpenPreferences();
    for (const char* name : {"FILESPROCESSED", "BYTESSAVED"})
        if (!prefs.WriteDWord(name, 0))
            ioMessages.Error(std::string(name) + ": the preferences cannot be written");
}

void TermShowLog(TermMessages& ioMessages) {
    const std::string path = MakeLog(ioMessages).GetPath();
    std::ifstream log(path, std::ios::binary);
    if (!log && errno == ENOENT)
        return ioMessages.Note("there is no results log yet");
    for (std::string line; std::getline(log, line);)
        TermPrint(TermPrintable(line) + "\n", ioMessages);
    if (!log.eof())
        ioMessages.FileError(path, std::strerror(errno));
}

void TermClearLog(TermMessages& ioMessages) {
    if (!MakeLog(ioMessages).ClearLog())
        ioMessages.Error("the results log is as it was");
}
