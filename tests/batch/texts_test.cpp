// Every text of the panel and the log, and the totals, to the byte.

#include "nvcode2/base/nvstring.h"
#include "tests/batch/batchtest.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizertotals.h"
#include "win/texts/pvtexts.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

constexpr std::chrono::sys_seconds km_Time =
    std::chrono::sys_days(std::chrono::year(2009) / 3 / 7) + std::chrono::hours(14) + std::chrono::minutes(5);

TEST(Texts, PercentagesRoundToSinglePrecisionFirst) {
    EXPECT_EQ(MizerPercentage(0, 0), "0.0%");
    EXPECT_EQ(MizerPercentage(1, 3), "33.3%");
    EXPECT_EQ(MizerPercentage(4294967295u, 4294967295u), "100.0%");
    EXPECT_EQ(MizerPercentage(3145728, 16777217), "18.8%") << "16777217 counts as 16777216";
}

TEST(Texts, ThePanelShowsTheEndOfALongPath) {
    EXPECT_EQ(MizerPanelName("/pics/of/many/things/01234567"), "/pics/of/many/things/01234567") << "29 bytes";
    EXPECT_EQ(MizerPanelName("/pics/of/many/things/012345678"), "...ics/of/many/things/012345678") << "30";
    EXPECT_EQ(MizerPanelName("/p\xe2\x82\xac/of/many/things/01234567.gif"), ".../of/many/things/01234567.gif")
        << "the last byte of the euro sign would be the first of 28";
}

TEST(Texts, LogEntries) {
    EXPECT_EQ(MizerSmallerEntry(km_Time, "/p/a b.gif", 1000, 625),
              "3/7/2009  14:5:0 File: \"/p/a b.gif\" \n     375 bytes saved (1000 - 625) 37.5%\n");
    EXPECT_EQ(MizerUnchangedEntry(km_Time, std::string(400, 'x').c_str(), ""),
              "3/7/2009  14:5:0 File: \"" + std::string(400, 'x') + "\" \n    File Unchanged.\n");
}

TEST(Texts, EveryNumberStandsForItsTextWhereverThatIsKept) {
    std::ifstream list(TEXTS_FILE);
    std::set<std::string> texts;
    std::set<std::uint32_t> numbers;
    for (std::string line; std::getline(list, line);) {
        if (line.empty() || line.front() == '#')
            continue;
        const std::uint32_t number = *numbers.insert(static_cast<std::uint32_t>(std::stoul(line))).first;
        const std::size_t begin = line.find('"') + 1;
        std::string text = line.substr(begin, line.rfind('"') - begin);
        for (const auto& [escape, character] : {std::pair("\\n", "\n"), {"\\t", "\t"}})
            for (std::size_t at = 0; (at = text.find(escape)) != std::string::npos;)
                text.replace(at, 2, character);
        EXPECT_EQ(PvSay(static_cast<PvText>(number)), text);
        EXPECT_TRUE(texts.insert(text).second) << text;
    }
    EXPECT_GT(texts.size(), 120u);
    for (std::uint32_t number = 0; number < 1000; ++number)
        EXPECT_EQ(CodeOf([&] { PvSay(static_cast<PvText>(number)); }), numbers.contains(number) ? 0u : 35u);
    EXPECT_EQ(CodeOf([] { NvString(static_cast<const NvStringResources*>(nullptr), 101u); }), 1u)
        << "a program that is not to be found";
    EXPECT_EQ(PvSay(PvText::km_LogHead, {"1", "2", "3", "4", "5", "6", "{}.gif"}),
              "1/2/3  4:5:6 File: \"{}.gif\" \n");
}

using PanelTest = BatchTest;

TEST_F(PanelTest, TheStoryOfTwoBatches) {
    const auto run = [&] {
        mShell.TakePanel();
        mBrain->ProcessWholeQueue();
        std::vector<std::string> panel = mShell.TakePanel();
        for (std::string& text : panel) // a name is shown as the end of its path
            if (text.starts_with("1013"))
                text = "1013";
        return panel;
    };
    mBrain->mNewSizes = {{"b.gif", 300}, {"c.gif", 750}, {"d.gif", 9}};
    mBrain->mActions["failed.gif"] = [] { NvThrow(NvErrorCode::km_DiskFull); };
    for (const auto& [name, size] :
         {std::pair("b.gif", 400), {"failed.gif", 1}, {"empty.gif", 0}, {"c.gif", 1000}})
        Queue(name, static_cast<std::size_t>(size));
    EXPECT_THAT(run(),
                ElementsAre("1018: 0 bytes saved", "1022: 0.0%", //
                            "1017: Processing File", "1020: 0.0%", "1016: 1 Files processed to date.", "1013",
                            "1015: 400 bytes unoptimized", "1017: 100 bytes saved", "1020: 25.0%",
                            "1018: 100 bytes saved", "1022: 25.0%", "1019: 100 bytes saved", //
                            "1017: Processing File", "1020: 0.0%", "1016: 2 Files processed to date.", "1013",
                            "1015: 1 bytes unoptimized", //
                            "1017: Processing File", "1020: 0.0%", "1016: 3 Files processed to date.",
                            "1013", //
                            "1017: Processing File", "1020: 0.0%", "1016: 4 Files processed to date.", "1013",
                            "1015: 1000 bytes unoptimized", "1017: 250 bytes saved", "1020: 25.0%",
                            "1018: 350 bytes saved", "1022: 25.0%", "1019: 350 bytes saved"))
        << "a failed file ends no batch, and the last saving stays visible";
    Queue("d.gif", 10);
    Queue("a.gif", 100);
    EXPECT_THAT(run(), ElementsAre("1018: 0 bytes saved", "1022: 0.0%", //
                                   "1017: Processing File", "1020: 0.0%", "1016: 5 Files processed to date.",
                                   "1013", "1015: 10 bytes unoptimized", "1017: 1 bytes saved", "1020: 10.0%",
                                   "1018: 1 bytes saved", "1022: 10.0%", "1019: 351 bytes saved", //
                                   "1017: Processing File", "1020: 0.0%", "1016: 6 Files processed to date.",
                                   "1013", "1015: 100 bytes unoptimized", "1017: ", "1020: "))
        << "a batch begins at zero, and ends with no current file";
}

TEST_F(PanelTest, TotalsAreStoredAtTheEnd) {
    mBrain->mNewSizes["a.gif"] = 60;
    Queue("a.gif", 100);
    Queue("b.gif", 100);
    Queue("empty.gif", 0);
    Queue("notes.txt", 5);
    mBrain->ProcessQueue();

    std::uint32_t value = 7;
    EXPECT_FALSE(mPrefs.ReadDWord("BYTESSAVED", value)) << "nothing is written in between";
    mPrefs.WriteDWord("BYTESSAVED", 1000); // another run ends meanwhile
    mBrain->StoreTotals();
    mBrain.reset(); // adds nothing twice
    mPrefs.ReadDWord("BYTESSAVED", value);
    EXPECT_EQ(value, 1040u);
    mPrefs.ReadDWord("FILESPROCESSED", value);
    EXPECT_EQ(value, 3u) << "an empty file counts, one of another name does not";
}

TEST_F(PanelTest, AClearedLogIsOpenedAgainByTheNextEntry) {
    WriteTestFile(mFolder / "PVGFLog.TXT", "earlier\n");
    Queue("a.gif", 40);
    mBrain->ProcessQueue();
    EXPECT_THAT(ReadLog(), StartsWith("earlier\n"));
    mBrain->ClearLog();
    EXPECT_EQ(ReadLog(), "");
    Queue("b.gif", 40);
    mBrain->ProcessQueue();
    EXPECT_THAT(ReadLog(), EndsWith("b.gif\" \n    File Unchanged.\n"));
}

} // namespace
