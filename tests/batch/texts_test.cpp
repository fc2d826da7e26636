// Every text of the panel and the log, and the totals, to the byte.

#include "tests/batch/batchtest.h"
#include "win/batch/mizerlog.h"
#include "win/batch/mizertotals.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr std::chrono::sys_seconds km_Time =
    std::chrono::sys_days(std::chrono::year(2009) / 3 / 7) + std::chrono::hours(14) + std::chrono::minutes(5);

TEST(Texts, PercentagesRoundToSinglePrecisionFirst) {
    EXPECT_EQ(MizerPercentage(0, 0), "0.0%");
    EXPECT_EQ(MizerPercentage(5, 0), "0.0%");
    EXPECT_EQ(MizerPercentage(1, 3), "33.3%");
    EXPECT_EQ(MizerPercentage(1, 1), "100.0%");
    EXPECT_EQ(MizerPercentage(4294967295u, 4294967295u), "100.0%");
    EXPECT_EQ(MizerPercentage(3145728, 16777217), "18.8%") << "16777217 counts as 16777216";
}

TEST(Texts, ThePanelShowsTheEndOfALongPath) {
    EXPECT_EQ(MizerPanelName("/pics/of/many/things/01234567"), "/pics/of/many/things/01234567") << "29 bytes";
    EXPECT_EQ(MizerPanelName("/pics/of/many/things/012345678"), "...ics/of/many/things/012345678") << "30";
    EXPECT_EQ(MizerPanelName("/home/someone/else/pics/0123456789012345"), "...e/else/pics/0123456789012345");
}

TEST(Texts, LogEntries) {
    EXPECT_EQ(MizerSmallerEntry(km_Time, "/p/a b.gif", 1000, 625),
              "3/7/2009  14:5:0 File: \"/p/a b.gif\" \n     375 bytes saved (1000 - 625) 37.5%\n");
    EXPECT_EQ(MizerSmallerEntry(km_Time, "x.gif", 4294967295u, 1),
              "3/7/2009  14:5:0 File: \"x.gif\" \n     4294967294 bytes saved (4294967295 - 1) 100.0%\n");
    EXPECT_EQ(MizerUnchangedEntry(km_Time, std::string(400, 'x').c_str()),
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
        // The name is a path of this run's folder; its text has a test of its own.
        std::erase_if(panel, [](const std::string& text) { return text.starts_with("1013"); });
        return panel;
    };
    mBrain->mNewSizes = {{"b.gif", 300}, {"c.gif", 750}};
    EXPECT_THAT(panelOf("a.gif", 100),
                ElementsAre("1017: Processing File", "1020: 0.0%", "1016: 1 Files processed to date.",
                            "1015: 100 bytes unoptimized"))
        << "unchanged";
    EXPECT_THAT(panelOf("b.gif", 400),
                ElementsAre("1017: Processing File", "1020: 0.0%", "1016: 2 Files processed to date.",
                            "1015: 400 bytes unoptimized", "1017: 100 bytes saved", "1020: 25.0%",
                            "1018: 100 bytes saved", "1022: 25.0%", "1019: 100 bytes saved"));
    EXPECT_THAT(panelOf("empty.gif", 0),
                ElementsAre("1017: Processing File", "1020: 0.0%", "1016: 3 Files processed to date."));
    EXPECT_THAT(panelOf("c.gif", 1000),
                ElementsAre("1017: Processing File", "1020: 0.0%", "1016: 4 Files processed to date.",
                            "1015: 1000 bytes unoptimized", "1017: 250 bytes saved", "1020: 25.0%",
                            "1018: 350 bytes saved", "1022: 25.0%", "1019: 350 bytes saved"));
}

TEST_F(PanelTest, TheNameIsShownAfterTheCount) {
    Queue("0123456789012345678901234567.gif", 1);
    mShell.TakePanel();
    mBrain->ProcessQueue();
    EXPECT_EQ(mShell.TakePanel()[3], "1013: ...456789012345678901234567.gif");
}

TEST_F(PanelTest, TotalsAreKeptWithoutAPanelAndStoredAtTheEnd) {
    mShell.mHasPanel = false;
    mShell.TakePanel();
    MakeBrain();
    mBrain->mNewSizes["a.gif"] = 60;
    Queue("a.gif", 100);
    Queue("b.gif", 100);
    Queue("empty.gif", 0);
    Queue("notes.txt", 5);
    mBrain->ProcessQueue();
    EXPECT_THAT(mShell.TakePanel(), IsEmpty());

    std::uint32_t value = 7;
    EXPECT_FALSE(mPrefs.ReadDWord("BYTESSAVED", value)) << "nothing is written in between";
    mPrefs.WriteDWord("BYTESSAVED", 1000); // another run ends meanwhile
    mBrain.reset();
    mPrefs.ReadDWord("BYTESSAVED", value);
    EXPECT_EQ(value, 1040u);
    mPrefs.ReadDWord("FILESPROCESSED", value);
    EXPECT_EQ(value, 3u) << "an empty file counts, one of another name does not";
}

class LogTest : public BatchTest {
protected:
    void RunOneOfEach() {
        mBrain->mNewSizes["a.gif"] = 30;
        Queue("a.gif", 40);
        Queue("b.gif", 40);
        mBrain->ProcessQueue();
    }
    bool HasLog() const { return std::filesystem::exists(mFolder / "PVGFLog.TXT"); }

    /** The log without the folder's name, in which nothing is to be a pattern. */
    std::string ReadEntries() const {
        std::string log = ReadLog();
        const std::string folder = mFolder / "";
        for (std::size_t at = 0; (at = log.find(folder)) != std::string::npos;)
            log.erase(at, folder.size());
        return log;
    }

    const std::string mTime = "[0-9]+/[0-9]+/20[0-9][0-9]  [0-9]+:[0-9]+:[0-9]+ File: ";
    const std::string mSmaller = mTime + "\"a.gif\" \n     10 bytes saved \\(40 - 30\\) 25.0%\n";
    const std::string mUnchanged = mTime + "\"b.gif\" \n    File Unchanged.\n";
};

TEST_F(LogTest, SkippedFilesLeaveNoEntry) {
    Queue("empty.gif", 0);
    Queue("a.gif.BAK", 1);
    Queue("a.txt", 1);
    mBrain->ProcessQueue();
    EXPECT_FALSE(HasLog());
}

TEST_F(LogTest, AClearedLogIsOpenedAgainByTheNextEntry) {
    WriteTestFile(mFolder / "PVGFLog.TXT", "earlier\n");
    RunOneOfEach();
    EXPECT_THAT(ReadEntries(), MatchesRegex("earlier\n" + mSmaller + mUnchanged));
    mBrain->ClearLog();
    EXPECT_EQ(ReadLog(), "");
    mBrain->mNewSizes.clear();
    Queue("b.gif", 40);
    mBrain->ProcessQueue();
    EXPECT_THAT(ReadEntries(), MatchesRegex(mUnchanged));
}

TEST_F(LogTest, ALogThatCannotBeOpenedIsToldForEachFileAndTheBatchGoesOn) {
    mShell.mDataFolder = mFolder / "none";
    RunOneOfEach();
    const std::string text = "Log open error! Unable to open log file at: " + (mFolder / "none") +
                             "/PVGFLog.TXT, error No such file or directory";
    EXPECT_THAT(mShell.mMessages, ElementsAre(text, text));
    EXPECT_EQ(mBrain->mOptimized.size(), 2u);
}

} // namespace
