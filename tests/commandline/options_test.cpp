// What the program understands of its command line, and what it says about itself.

#include "term/options/arguments.h"
#include "tests/support/programtest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TermSettings Parse(const std::vector<std::string>& inArguments) {
    TermSettings settings;
    std::string error;
    EXPECT_TRUE(TermParseArguments(inArguments, settings, error)) << error;
    return settings;
}

TEST(Options, NamesAndOptionsMayMixUntilTheDoubleDash) {
    const TermSettings settings = Parse({"a", "-q", "--max-mem", "64", "--tolerance=0", "b", "--no-log",
                                         "--min-saving=1.5kB", "--", "-v", "--", "--help"});
    EXPECT_THAT(settings.mNames, ElementsAre("a", "b", "-v", "--", "--help"));
    EXPECT_EQ(settings.GetDetail(), TermDetail::km_Quiet);
    EXPECT_EQ(settings.mTask, TermTask::km_Process);
    EXPECT_EQ(settings.mOptimizer.mMemoryLimit, 64u << 20);
    EXPECT_EQ(settings.mOptimizer.mTolerance, 0u);
    EXPECT_EQ(settings.mLeastSaving.mBytes, 1536u);
    EXPECT_EQ(Parse({"a", "--max-memory=2G"}).mOptimizer.mMemoryLimit, std::uint64_t{2} << 30);
}

TEST(Options, HelpAndVersionWinOverMistakes) {
    EXPECT_EQ(Parse({"--no-such", "-h"}).mTask, TermTask::km_BriefHelp);
    EXPECT_EQ(Parse({"--help", "-Z"}).mTask, TermTask::km_FullHelp);
    EXPECT_EQ(Parse({"--version", "--totals"}).mTask, TermTask::km_Version);
    EXPECT_THAT(Parse({"--set=LOG=0", "-h"}).mStored, IsEmpty());
}

using Program = ProgramTest;

TEST_F(Program, AWrongCommandLineIsOneLineAndStatus2) {
    const std::vector<std::pair<std::vector<std::string>, const char*>> cases = {
        {{}, "name at least one GIF file or folder"},
        {{"--foo=bar", "--worse", "a"}, "unknown option '--foo'"},
        {{"--dryrun", "a"}, "unknown option '--dryrun': did you mean '--dry-run'?"},
        {{"-qx", "a"}, "unknown option '-x'"},
        {{"--hepl", "a"}, "unknown option '--hepl': did you mean '--help'?"},
        {{"--re", "a"},
         "option '--re' may be '--recursive', '--restore', '--reset-totals', '--report', '--report-limit'"},
        {{"-Mash.gif"}, "unknown option '-M': for a file, write ./-Mash.gif or put -- before the names"},
        {{"--no-log=1", "a"}, "option '--no-log' takes no value"},
        {{"a", "--max-memory"}, "option '--max-memory' needs a value: SIZE"},
        {{"--max-memory=0", "a"},
         "--max-memory must be a size above 0, as 512M or 2G, or a part of the memory, as 25%, not '0'"},
        {{"--tolerance", "29", "a"}, "--tolerance must be 0 to 28, not '29'"},
        {{"--contact-sheet=", "a"}, "--contact-sheet must be a name, not ''"},
        {{"--totals", "a.gif"}, "--totals takes no file names, but there is 'a.gif'"},
        {{"--set", "BACKUP=2"}, "BACKUP must be 0 or 1, not '2'"},
        {{"--set", "HUE=1"},
         "no preference 'HUE'; there are BACKUP, OBACK, ALLOWCROP, LOSSLESS, LOG, LOGALL, BYTESSAVED, "
         "FILESPROCESSED"},
        {{"--contact-sheet", "s.PNG", "a"},
         "--contact-sheet makes a file that ends in .gif: name it 's.gif', not 's.PNG'"},
        {{"-u", "a"}, "'--update' is about the results of '--output'"},
        {{"-", "a"}, "'-' must be the only name"},
        {{"-o", "out", "-"}, "'-' does not go with '--output'"},
        {{"--restore", "--report", "r.html", "a"},
         "'--report' shows what was made smaller; leave it out, or list what is restored with '--json'"},
        {{"-vq", "a"}, "'--quiet' does not go with '--verbose'"},
        {{"-0", "a"}, "'--null' is about the names of '--files-from'"},
        {{"--min-saving=101%", "a"},
         "--min-saving must be a number of bytes, as 500 or 2k, or a percentage, as 2%, not '101%'"},
        {{"--\x1b[31m"}, "unknown option '--\\x1b[31m'"},
    };
    for (const auto& [arguments, text] : cases)
        ExpectRefusal(arguments, std::string(text) + " (see 'parvigif --help')", 2);
}

TEST_F(Program, TheWholeHelpShowsEveryOptionAndTheShortOneFitsAScreen) {
    const ProgramResult full = mRunner.Run({"--help"});
    const ProgramResult brief = mRunner.Run({"-h"});
    for (const bool isFull : {true, false}) {
        const ProgramResult& help = isFull ? full : brief;
        EXPECT_EQ(help.mStatus, 0);
        EXPECT_EQ(help.mErr, "");
        EXPECT_THAT(help.mOut, testing::StartsWith("Usage: parvigif [OPTION]... NAME...\n"));
        for (const TermOption& option : TermGetOptions())
            EXPECT_EQ(help.mOut.find(std::string("  ") + option.mBrief + "\n") != std::string::npos,
                      isFull || !option.mIsRare);
        std::istringstream lines(help.mOut);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80u) << line;
    }
    EXPECT_LE(std::count(brief.mOut.begin(), brief.mOut.end(), '\n'), 40);
    EXPECT_LT(std::count(full.mOut.begin(), full.mOut.end(), '\n'), 100);
}

} // namespace
