// Texts from users and other programs: preferences, the ledger, the command line. The first byte chooses.

#include <filesystem>

#include "fuzz/fuzz.h"
#include "term/options/arguments.h"
#include "tests/support/testfolder.h"
#include "win/batch/mizerledger.h"
#include "win/batch/mizerpreferences.h"
#include "wnatom/wnpref.h"

namespace {

void CheckPreferences(const TestFolder& inFolder, const std::string& inText) {
    WriteTestFile(inFolder / "user/Norvek/Parvigif/1.x.ini", inText);
    WnPref prefs("Parvigif", "1.x");
    const MizerSettings settings = MizerSettings::Read(prefs);
    const WnPrefNumber one[] = {{"FUZZ", 1}};
    Require(prefs.WriteDWord("FUZZ", 4711) && prefs.AddToDWords(one), "any store takes a value");
    std::uint32_t value = 0;
    Require(prefs.ReadDWord("FUZZ", value) && value == 4712, "and gives it back");
    Require(MizerSettings::Read(prefs).mBackup == settings.mBackup, "and keeps the others");
}

void CheckLedger(const TestFolder& inFolder, const std::string& inText) {
    const MizerDataFolder folder{[&] { return inFolder / "data"; }, [](const std::string&, const char*) {}};
    WriteTestFile(inFolder / "data/PVGFDone.TXT", inText);
    const std::string picture = WriteTestFile(inFolder / "picture.gif", inText + "x");
    MizerLedger(folder).Knows(picture.c_str(), MizerLedger::km_Lossy);
    MizerLedger(folder).Add(picture.c_str(), MizerLedger::km_Lossy);
    Require(MizerLedger(folder).Knows(picture.c_str(), MizerLedger::km_Lossy), "what was added is known");
}

void CheckArguments(const std::string& inText) {
    std::vector<std::string> arguments(1);
    for (const char character : inText) {
        if (character == '\n')
            arguments.emplace_back();
        else if (character != '\0')
            arguments.back() += character;
    }
    TermSettings settings;
    std::string error;
    const bool makesSense = TermParseArguments(arguments, settings, error);
    Require(makesSense == error.empty(), "an error is named");
    Require(!makesSense || settings.mOptimizer.mTolerance <= 28, "values are in their bounds");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize) {
    static const TestFolder folder;
    static const TestEnvironment environment(folder);
    if (inSize == 0)
        return 0;
    const std::string text(inData + 1, inData + inSize);
    if (inData[0] % 3 == 0)
        CheckPreferences(folder, text);
    else if (inData[0] % 3 == 1)
        CheckLedger(folder, text);
    else
        CheckArguments(text);
    return 0;
}
