// A contact sheet is a new file or none, lists what is on it, and leaves everything else alone.

#include "tests/support/programtest.h"

namespace {

using testing::StartsWith;
namespace fs = std::filesystem;

class ContactSheetCommand : public ProgramTest {
protected:
    ContactSheetCommand() { DrawSamples(); }
};

TEST_F(ContactSheetCommand, ShowsWhereEachFileIsAndChangesNone) {
    const Files before = ReadAll();
    const ProgramResult result = mRunner.Run(
        {"--contact-sheet", "sheet.gif", "icon.gif", "ball.gif", "icon.gif", "s*.gif", "tiles.gif"});
    EXPECT_EQ(result.mErr, "parvigif: icon.gif: skipped: the same file was named before\n");
    EXPECT_EQ(result.mStatus, 0);
    EXPECT_EQ(result.mOut, "    Row  Column  File\n"
                           "      1       1  icon.gif\n"
                           "      1       2  ball.gif\n"
                           "      2       1  ./spinner.gif\n"
                           "      2       2  ./sunset.gif\n"
                           "      3       1  tiles.gif\n");
    Files after = ReadAll();
    EXPECT_THAT(after.extract("sheet.gif").mapped(), StartsWith("GIF87a"));
    EXPECT_EQ(after, before);
    EXPECT_EQ(fs::status(mFolder / "sheet.gif").permissions(),
              fs::status(mRunner.GetOwnFolder() / "stdout").permissions())
        << "those of any new file";
    EXPECT_FALSE(fs::exists(mRunner.GetOwnFolder() / "state/Norvek"))
        << "nothing was done that belongs there";

    const ProgramResult quiet = mRunner.Run({"--contact-sheet=quiet.gif", "-q", "."});
    EXPECT_EQ(quiet.mOut + quiet.mErr, "");
    EXPECT_TRUE(Has("quiet.gif"));
}

TEST_F(ContactSheetCommand, NeverReplacesAFile) {
    const std::string exists = ": the file exists already (code 31)";
    ExpectRefusal({"--contact-sheet", "icon.gif", "icon.gif", "ball.gif"}, "icon.gif" + exists);
    fs::create_directory(mFolder / "folder");
    ExpectRefusal({"--contact-sheet", "folder", "icon.gif"}, "folder" + exists);
    fs::create_symlink("nowhere.gif", mFolder / "link.gif");
    ExpectRefusal({"--contact-sheet", "link.gif", "icon.gif"}, "link.gif" + exists);
}

} // namespace
