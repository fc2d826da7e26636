// What a run prints, and what it leaves on the disk, when all goes well.

#include "term/text/numbers.h"
#include "tests/support/programtest.h"
#include "win/batch/mizertotals.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
namespace fs = std::filesystem;

using Results = ProgramTest;

TEST_F(Results, ALinePerFileThenATotal) {
    DrawSamples();
    const Files originals = ReadAll();
    std::vector<std::string> names;
    for (const SamplePicture& picture : GetSamplePictures())
        names.emplace_back(picture.mFileName);
    const ProgramResult result = mRunner.Run(names);
    EXPECT_EQ(result.mStatus, 0);
    EXPECT_EQ(result.mErr, "");
    EXPECT_THAT(ReadTestFile(README_FILE), HasSubstr("$ ./run\n" + result.mOut + "```\n"));
    std::size_t saved = 0;
    for (const auto& [name, bytes] : originals) {
        const std::size_t before = bytes.size(), after = Read(name).size();
        std::string line = "\n";
        for (const std::size_t number : {before, after, before - after})
            line += " +" + TermGrouped(number);
        const std::string share =
            MizerPercentage(static_cast<std::uint32_t>(before - after), static_cast<std::uint32_t>(before));
        EXPECT_THAT(result.mOut, testing::ContainsRegex(line + " +" + share + " +" + name + "\n"));
        EXPECT_EQ(Read(name + ".BAK"), bytes);
        saved += before - after;
    }
    EXPECT_THAT(result.mOut, HasSubstr(" 6 files: 6 made smaller\n"));
    EXPECT_EQ(ReadTestFile(mRunner.GetOwnFolder() / "user/Norvek/Parvigif/1.x.ini"),
              "BYTESSAVED=" + std::to_string(saved) + "\nFILESPROCESSED=6\n");
}

TEST_F(Results, AFolderIsTakenInNameOrderAndASecondRunTouchesNoBackup) {
    DrawSamples();
    Write("notes.txt", "no picture");
    const std::string original = Read("icon.gif");
    const std::string first = mRunner.Run({"."}).mOut;
    EXPECT_LT(first.find("./ball.gif"), first.find("./icon.gif"));
    EXPECT_LT(first.find("./icon.gif"), first.find("./tiles.gif"));
    const ProgramResult again = mRunner.Run({"./", "--again", "--overwrite-backups"});
    EXPECT_EQ(again.mStatus, 0);
    EXPECT_EQ(again.mErr, "");
    EXPECT_THAT(again.mOut, HasSubstr(" 6 files: ")) << "backups and other files are no entries";
    EXPECT_EQ(Read("icon.gif.BAK"), original) << "nothing was replaced, so no backup either";
    EXPECT_EQ(Read("notes.txt"), "no picture");
}

TEST_F(Results, TheLogGetsOneEntryPerFile) {
    DrawSamples();
    mRunner.Run({"icon.gif"});
    const std::string log = mRunner.GetOwnFolder() / "state/Norvek/PVGFLog.TXT";
    const std::string entry = ReadTestFile(log);
    EXPECT_THAT(entry, MatchesRegex("[0-9/]+  [0-9:]+ File: \"/[^\"]*/icon.gif\" \n"
                                    "     [0-9]+ bytes saved \\(1112 - [0-9]+\\) [0-9.]+%\n"));
    mRunner.Run({"icon.gif", "--log-results-only"});
    mRunner.Run({"tiles.gif", "--no-log"});
    EXPECT_EQ(ReadTestFile(log), entry);
    mRunner.Run({"icon.gif", "--again"});
    EXPECT_THAT(ReadTestFile(log), testing::EndsWith("/icon.gif\" \n    File Unchanged.\n"));
}

TEST_F(Results, WhatIsPassedOverIsReportedWhenItWasNamed) {
    Write("notes.txt", "x");
    Write("empty.gif", "");
    Write("old.gif.BAK", "x");
    fs::create_symlink("empty.gif", mFolder / "link.gif");
    const ProgramResult named = mRunner.Run({"notes.txt", "empty.gif", "old.gif.BAK", "link.gif"});
    EXPECT_EQ(named.mStatus, 3);
    EXPECT_EQ(named.mOut, "");
    EXPECT_EQ(named.mErr, "parvigif: link.gif: skipped: the same file was named before\n"
                          "parvigif: notes.txt: skipped: its name does not end in GIF; 'parvigif - <NAME "
                          ">NEW.gif' reads any file\n"
                          "parvigif: empty.gif: skipped: empty\n"
                          "parvigif: old.gif.BAK: skipped: a backup\n"
                          "parvigif: nothing was done\n");
    EXPECT_EQ(mRunner.Run({"-q", "notes.txt", "empty.gif"}).mErr, "parvigif: nothing was done\n");
    EXPECT_THAT(mRunner.Run({"-v", "."}).mErr, HasSubstr("./notes.txt: skipped"));
}

TEST_F(Results, ALinkStaysALinkAndNamesMayHoldAnything) {
    DrawSamples();
    const std::string strange = "a\n\x1b[31m\xc2\x9b\xe2\x80\xae *[x] \xc3\xa9\xff.gif";
    fs::create_directory(mFolder / "vault");
    fs::rename(mFolder / "icon.gif", mFolder / "vault/icon.gif");
    fs::create_symlink("vault/icon.gif", mFolder / "link.gif");
    fs::rename(mFolder / "tiles.gif", mFolder / strange);
    fs::rename(mFolder / "ball.gif", mFolder / "-v.gif");
    const ProgramResult result = mRunner.Run({"link.gif", strange, "--", "-v.gif"});
    EXPECT_EQ(result.mStatus, 0);
    EXPECT_TRUE(fs::is_symlink(mFolder / "link.gif"));
    EXPECT_LT(Read("vault/icon.gif").size(), Read("link.gif.BAK").size());
    EXPECT_THAT(result.mOut, HasSubstr("  a\\n\\x1b[31m\\xc2\\x9b\\xe2\\x80\\xae *[x] \xc3\xa9\xff.gif\n"));
    EXPECT_TRUE(Has("-v.gif.BAK"));
}

TEST_F(Results, TheSamplesAreWhatTheProgramDraws) {
    DrawSamples();
    const Files drawn = ReadAll();
    for (const auto& [name, bytes] : drawn)
        EXPECT_EQ(bytes, ReadTestFile(std::string(SAMPLES_FOLDER) + "/" + name))
            << name << ": draw them again with build/linux/samples/drawsamples samples";
    for (const auto& entry : fs::directory_iterator(SAMPLES_FOLDER))
        EXPECT_TRUE(entry.path().extension() != ".gif" || drawn.contains(entry.path().filename().string()))
            << "nothing draws " << entry.path();
}

} // namespace
