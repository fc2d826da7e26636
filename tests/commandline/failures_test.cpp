// Bad input and a hostile system: one clear line, status 1, the file as it was, the rest of the batch done.

#include "tests/support/programtest.h"

namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

/** Signature, a large screen, and one frame as large, with a stream that ends at once. */
std::string MakeHugeGIF(std::uint8_t inHigh) {
    const std::string size = {'\xff', static_cast<char>(inHigh), '\xff', static_cast<char>(inHigh)};
    return "GIF89a" + size + std::string("\x80\0\0\0\0\0\xff\xff\xff", 9) + std::string(",\0\0\0\0", 5) +
           size + std::string("\0\x02\x02\x4c\x01\0;", 7);
}

class Failures : public ProgramTest {
protected:
    Failures() {
        fs::permissions(mFolder.GetPath(), fs::perms::all);
        DrawGoodFile();
    }

    void DrawGoodFile() const {
        fs::remove(mFolder / "good.gif.BAK");
        fs::remove(mFolder / "good.gif");
        DrawSample("icon.gif", "good.gif");
        fs::permissions(mFolder / "good.gif", fs::perms::all);
    }

    /** Runs over the bad name and a good file behind it; the good one is made smaller all the same. */
    void ExpectLine(const std::string& inBadName, const std::string& inText) {
        DrawGoodFile();
        const ProgramResult result = mRunner.Run({inBadName, "good.gif"});
        EXPECT_EQ(result.mErr, "parvigif: " + inBadName + ": " + inText + "\n");
        EXPECT_EQ(result.mStatus, 1);
        EXPECT_THAT(result.mOut, HasSubstr("  good.gif\n"));
        EXPECT_LT(Read("good.gif").size(), Read("good.gif.BAK").size());
    }
};

TEST_F(Failures, NamesThatLeadNowhere) {
    fs::create_directory(mFolder / "texts");
    Write("texts/notes.txt", "x");
    ExpectLine("none.gif", "no such file or folder (code 10)");
    ExpectLine("texts", "no GIF file there (code 10)");
    ExpectLine("x*.gif", "no GIF file there (code 10)");
}

TEST_F(Failures, FilesThatAreNoSoundGIFs) {
    DrawSample("spinner.gif", "spinner.gif");
    const std::string sound = Read("spinner.gif");
    std::string unknownBlock = sound;
    unknownBlock[13 + 768] = 'x'; // the first byte behind the global colour table
    std::string narrow = sound;
    narrow[6] = 1; // the screen's width, so that frames stand out
    const std::string damaged = "damaged: not a well-formed GIF file (code 28)";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"hello", "not a GIF file (code 32)"},
        {"GIF90a" + sound.substr(6), "a GIF file of an unknown version (code 33)"},
        {"GIF", "the file ends too early (code 18)"},
        {sound.substr(0, 400), "the file ends too early (code 18)"},
        {sound.substr(0, sound.size() / 2), "the file ends too early (code 18)"},
        {unknownBlock, damaged},
        {narrow, damaged},
        {sound.substr(0, 13 + 768) + ";", damaged}, // no frame at all
        {sound.substr(0, sound.size() - 6) + std::string("\xff\xff\xff\xff\0;", 6),
         "frame 12 is damaged (code 28)"},
        {MakeHugeGIF(0xff), "needs more memory than allowed (code 2)"},
    };
    for (const auto& [bytes, text] : cases) {
        Write("bad.gif", bytes);
        ExpectLine("bad.gif", text);
        EXPECT_EQ(Read("bad.gif"), bytes) << text;
        EXPECT_FALSE(Has("bad.gif.BAK"));
    }
    Write("large.gif", MakeHugeGIF(0x07)); // 2047 x 2047
    EXPECT_THAT(mRunner.Run({"--max-memory=1", "large.gif"}).mErr,
                HasSubstr("needs more memory than allowed"));
    const std::string larger = MakeHugeGIF(0x1f); // 8191 x 8191
    Write("large.gif", larger);
    EXPECT_EQ(mRunner.Run({"--max-time=1", "large.gif"}).mErr,
              "parvigif: large.gif: needs more work than allowed\n");
    EXPECT_EQ(Read("large.gif"), larger);
}

TEST_F(Failures, MissingRights) {
    mRunner.mAsNobody = true;
    DrawSample("tiles.gif", "secret.gif");
    fs::permissions(mFolder / "secret.gif", fs::perms::none);
    ExpectLine("secret.gif", "no permission to open it (code 14)");
    fs::create_directory(mFolder / "closed");
    fs::permissions(mFolder / "closed", fs::perms::none);
    ExpectLine("closed", "no permission to open it (code 14)");
    ExpectLine("closed/a.gif", "no permission to open it (code 14)");
    fs::permissions(mFolder / "closed", fs::perms::all);
}

TEST_F(Failures, WhatIsReadOnlyStaysAsItIs) {
    const std::string readOnly = "no permission to replace it: the file or its folder is read-only (code 5)";
    DrawSample("tiles.gif", "locked.gif");
    fs::create_directory(mFolder / "locked");
    DrawSample("tiles.gif", "locked/tiles.gif");
    const std::string original = Read("locked.gif");
    fs::permissions(mFolder / "locked.gif", fs::perms::owner_read | fs::perms::others_read);
    fs::permissions(mFolder / "locked/tiles.gif", fs::perms::all);
    fs::permissions(mFolder / "locked", fs::perms::owner_read | fs::perms::owner_exec |
                                            fs::perms::others_read | fs::perms::others_exec);
    for (int run = 0; run < 2; ++run) { // as whoever runs the tests, then as nobody
        ExpectLine("locked.gif", readOnly);
        ExpectLine("locked/tiles.gif", readOnly);
        EXPECT_EQ(Read("locked.gif"), original);
        EXPECT_EQ(Read("locked/tiles.gif"), original);
        EXPECT_THAT(mRunner.Run({"--min-saving=1", "locked.gif"}).mErr, HasSubstr(readOnly));
        EXPECT_EQ(Read("locked.gif"), original);
        EXPECT_FALSE(Has("locked.gif.BAK"));
        mRunner.mAsNobody = true;
    }
    EXPECT_EQ(mRunner.Run({"-o", "out", "locked.gif"}).mStatus, 0) << "it is only read";
    EXPECT_LT(Read("out/locked.gif").size(), original.size());
    fs::permissions(mFolder / "locked", fs::perms::all);
    EXPECT_EQ(std::distance(fs::directory_iterator(mFolder / "locked"), fs::directory_iterator()), 1);
}

TEST_F(Failures, ABackupThatCannotBeMadeKeepsTheFile) {
    DrawSample("tiles.gif", "tiles.gif");
    const std::string original = Read("tiles.gif");
    fs::create_directory(mFolder / "tiles.gif.BAK");
    ExpectLine("tiles.gif", "no backup could be made: File exists (code 1)");
    EXPECT_EQ(Read("tiles.gif"), original);
}

TEST_F(Failures, ListsThatCannotBeWrittenStopNothing) {
    for (const char* name : {"PVGFLog.TXT", "PVGFDone.TXT"}) // folders where they should be
        WriteTestFile(mRunner.GetOwnFolder() / ("state/Norvek/" + std::string(name) + "/x"), "");
    const ProgramResult result = mRunner.Run({"-q", "--skip-done", "good.gif"});
    EXPECT_THAT(result.mErr, HasSubstr("parvigif: Unable to open log file at: "));
    EXPECT_THAT(result.mErr, HasSubstr("parvigif: Unable to write the list of files done: "));
    EXPECT_EQ(result.mStatus, 0);
}

TEST_F(Failures, OutputThatCannotBeWrittenIsAnError) {
    mRunner.mOutput = "/dev/full";
    for (const char* argument : {"--help", "good.gif"}) {
        const ProgramResult result = mRunner.Run({argument});
        EXPECT_EQ(result.mErr, "parvigif: standard output: No space left on device\n") << argument;
        EXPECT_EQ(result.mStatus, 1);
    }
    EXPECT_TRUE(Has("good.gif.BAK")) << "the work is done all the same";
}

} // namespace
