// The man page, the completions and the user guide know the same options as the program.

#include <cstdio>

#include "term/options/options.h"
#include "tests/support/test.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

std::string OutputOf(const std::string& inCommand) {
    std::FILE* pipe = popen(inCommand.c_str(), "r");
    std::string text;
    std::array<char, 4096> buffer{};
    for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        text.append(buffer.data(), count);
    EXPECT_EQ(pclose(pipe), 0) << inCommand;
    return text;
}

std::string Made(const std::string& inKind) {
    return OutputOf("'" PARVIGIF_MANUAL "' " + inKind);
}

/** What bash offers for the last of some words. */
std::vector<std::string> BashOffers(const TestFolder& inFolder, const std::string& inWords) {
    WriteTestFile(inFolder / "run", Made("bash") + "COMP_WORDS=(parvigif " + inWords +
                                        ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_parvigif\n"
                                        "printf '%s\\n' \"${COMPREPLY[@]}\"\n");
    std::istringstream lines(OutputOf("cd '" + inFolder.GetPath() + "' && bash ./run"));
    std::vector<std::string> offers;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty())
            offers.push_back(line);
    }
    return offers;
}

TEST(Manual, EveryOptionIsOfferedInEachShell) {
    const std::string zsh = Made("zsh"), fish = Made("fish");
    std::vector<std::string> typed;
    for (const TermOption& option : TermGetOptions()) {
        std::string zshName, fishName;
        if (option.mShort) {
            typed.push_back(zshName = std::string("-") + option.mShort);
            fishName = std::string(" -s ") + option.mShort;
        }
        if (option.mName) {
            typed.push_back(zshName = std::string("--") + option.mName);
            fishName += std::string(" -l ") + option.mName;
        }
        EXPECT_THAT(zsh, HasSubstr(zshName + (option.mArgument ? option.mName ? "=" : "+" : "")));
        EXPECT_THAT(fish, HasSubstr("complete -c parvigif" + fishName + " "));
    }
    EXPECT_THAT(BashOffers(TestFolder(), "-"), UnorderedElementsAreArray(typed));
    EXPECT_THAT(Made("man"), HasSubstr("\n\\fB\\-\\-keep\\-times\\fR"));
}

TEST(Manual, BashOffersPicturesFoldersAndValues) {
    const TestFolder folder;
    WriteTestFile(folder / "my a.GIF", "");
    WriteTestFile(folder / "b.txt", "");
    WriteTestFile(folder / "d/c.gif", "");
    EXPECT_THAT(BashOffers(folder, "--lossless ''"), ElementsAre("d", "my a.GIF"));
    EXPECT_THAT(BashOffers(folder, "--contact-sheet b"), ElementsAre("b.txt"));
    EXPECT_THAT(BashOffers(folder, "--tolerance ''"), IsEmpty());
    EXPECT_THAT(BashOffers(folder, "--set LOG"), ElementsAre("LOG=", "LOGALL="));
    EXPECT_THAT(BashOffers(folder, "--set = LOG ="), ElementsAre("0", "1"));
    EXPECT_THAT(BashOffers(folder, "-- -"), IsEmpty());
}

TEST(Manual, TheGuideListsTheOptionsOfThisProgram) {
    EXPECT_EQ(ReadTestFile(OPTIONS_PAGE), Made("options"))
        << "after a change to the table: cmake --build --preset linux --target options_page";
}

} // namespace
