// Every text of the panel and the log, and the totals, to the byte.

#include "tests/batch/batchtest.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizertotals.h"

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
}

TEST(Texts, LogEntries) {
    EXPECT_EQ(MizerSmallerEntry(km_Time, "/p/a b.gif", 1000, 625),
              "3/7/2009  14:5:0 File: \"/p/a b.gif\" \n     375 bytes saved (1000 - 625) 37.5%\n");
    EXPECT_EQ(MizerUnchangedEntry(km_Time, std::string(400, 'x').c_str(), ""),
              "3/7/2009  14:5:0 File: \"" + std::string(400, 'x') + "\" \n    File Unchanged.\n");
}

using PanelTest = BatchTest;

TEST_F(PanelTest, StartUpShowsTheTotalsToDate) {
    mPrefs.WriteDWord("FILESPROCESSED", 41);
    mPrefs.WriteDWord("BYTESSAVED", 3000000000u);
    mShell.TakePanel();
    MakeBrain();
    EXPECT_THAT(mShell.TakePanel(), ElementsAre("1016: 41 Files processed to date.", "1018: 0 bytes saved",
                                                "1019: 3000000000 bytes saved", "1022: 0.0%"));
}

TEST_F(PanelTest, TheStoryOfABatch) {
    const auto panelOf = [&](const char* inName, std::size_t inSize) {
        Queue(inName, inSize);
        mShell.TakePanel();
        mBrain->ProcessQueue();
        std::vector<std::string> panel = mShell.TakePanel();
        for (std::string& text : panel) // a name is shown as the end of its path
            if (text.starts_with("1013"))
                text = "1013";
        return panel;
    };
    mBrain->mNewSizes = {{"b.gif", 300}, {"c.gif", 750}};
    EXPECT_THAT(panelOf("a.gif", 100),
                ElementsAre("1017: Processing File", "1020: 0.0%", "1016: 1 Files processed to date.", "1013",
                            "1015: 100 bytes unoptimized"))
        << "unchanged";
    EXPECT_THAT(panelOf("b.gif", 400),
                ElementsAre("1017: Processing File", "1020: 0.0%", "1016: 2 Files processed to date.", "1013",
                            "1015: 400 bytes unoptimized", "1017: 100 bytes saved", "1020: 25.0%",
                            "1018: 100 bytes saved", "1022: 25.0%", "1019: 100 bytes saved"));
    EXPECT_THAT(panelOf("empty.gif", 0), ElementsAre("1017: Processing File", "1020: 0.0%",
                                                     "1016: 3 Files processed to date.", "1013"));
    EXPECT_THAT(panelOf("c.gif", 1000),
                ElementsAre("1017: Processing File", "1020: 0.0%", "1016: 4 Files processed to date.", "1013",
                            "1015: 1000 bytes unoptimized", "1017: 250 bytes saved", "1020: 25.0%",
                            "1018: 350 bytes saved", "1022: 25.0%", "1019: 350 bytes saved"));
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
    mBrain.reset();
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
