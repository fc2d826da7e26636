// Runs that leave the originals alone, or find their files elsewhere than on the command line.

#include "tests/support/programtest.h"
#include "wnatom/wnfileclaim.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

/** A tree: ball.gif, sub/icon.gif, sub/deep/bad.gif (no GIF), sub/notes.txt. */
class Modes : public ProgramTest {
protected:
    Modes() {
        fs::create_directories(mFolder / "in/sub/deep");
        DrawSample("ball.gif", "in/ball.gif");
        DrawSample("icon.gif", "in/sub/icon.gif");
        Write("in/sub/deep/bad.gif", "junk");
        Write("in/sub/notes.txt", "x");
        std::error_code where; // there are no links
        fs::create_directory_symlink("..", mFolder / "in/sub/circle", where);
        mBefore = ReadAll("in");
    }

    bool HasTraces() const {
        std::error_code none;
        return fs::directory_iterator(mRunner.GetOwnFolder() / "state/Norvek", none) !=
                   fs::directory_iterator() ||
               fs::exists(mRunner.GetOwnFolder() / "user") || !fs::is_empty(mRunner.GetOwnFolder() / "tmp");
    }

    /** Runs the program with a file as its standard input. */
    ProgramResult RunOn(const std::string& inFile, const std::vector<std::string>& inArguments) {
        mRunner.mInput = inFile;
        ProgramResult result = mRunner.Run(inArguments);
        mRunner.mInput.clear();
        return result;
    }

    Files mBefore;
};

TEST_F(Modes, ADryRunReportsWhatARunSavesAndLeavesNoTrace) {
    const ProgramResult dry = mRunner.Run({"-n", "-r", "in"});
    EXPECT_EQ(ReadAll("in"), mBefore);
    EXPECT_FALSE(HasTraces());
    EXPECT_THAT(dry.mOut, HasSubstr("  3 files: 2 could be made smaller, 1 failed\n"));
    fs::permissions(mFolder / "in/ball.gif", fs::perms::owner_read);
    EXPECT_THAT(mRunner.Run({"-n", "in/ball.gif"}).mErr, HasSubstr("read-only (code 5)"));
    fs::permissions(mFolder / "in/ball.gif", fs::perms::all);
    const ProgramResult real = mRunner.Run({"-r", "in"});
    EXPECT_EQ(dry.mErr, real.mErr);
    EXPECT_EQ(dry.mStatus, real.mStatus);
    EXPECT_EQ(dry.mOut.substr(0, dry.mOut.find("3 files")), real.mOut.substr(0, real.mOut.find("3 files")));
}

TEST_F(Modes, AWholeTreeCanBeRestored) {
    mRunner.Run({"-r", "in"});
    EXPECT_NE(Read("in/sub/icon.gif"), mBefore["sub/icon.gif"]);
    const ProgramResult result = mRunner.Run({"--restore", "-r", "in"});
    EXPECT_EQ(result.mErr, "");
    EXPECT_EQ(result.mOut, "restored  in/ball.gif\nrestored  in/sub/icon.gif\n");
    for (const auto& [name, bytes] : mBefore)
        EXPECT_EQ(Read("in/" + name), bytes) << name;
}

TEST_F(Modes, AnOutputFolderGetsEveryFileAndNoOriginalChanges) {
    const ProgramResult result = mRunner.Run({"-r", "-o", "out/new", "--keep-times", "in"});
    EXPECT_EQ(ReadAll("in"), mBefore);
    EXPECT_EQ(result.mStatus, 1);
    EXPECT_EQ(result.mErr, "parvigif: in/sub/deep/bad.gif: not a GIF file (code 32)\n");
    const auto results = ReadAll("out/new");
    ASSERT_EQ(results.size(), 3u);
    EXPECT_LT(results.at("ball.gif").size(), mBefore["ball.gif"].size());
    EXPECT_LT(results.at("sub/icon.gif").size(), mBefore["sub/icon.gif"].size());
    EXPECT_EQ(results.at("sub/deep/bad.gif"), "junk") << "as it is, so that nothing is missing";
    EXPECT_EQ(fs::last_write_time(mFolder / "out/new/ball.gif"),
              fs::last_write_time(mFolder / "in/ball.gif"));

    EXPECT_THAT(
        mRunner.Run({"-o", "out/new", "in/ball.gif"}).mErr,
        HasSubstr("in/ball.gif: not written to the output folder: the file exists already (code 31)\n"));
    EXPECT_EQ(ReadAll("out/new"), results);

    EXPECT_THAT(mRunner.Run({"-v", "-u", "-o", "out/new", "in/ball.gif"}).mErr,
                HasSubstr("in/ball.gif: skipped: the output folder has it already\n"));
    fs::last_write_time(mFolder / "out/new/ball.gif", fs::file_time_type::min());
    EXPECT_THAT(mRunner.Run({"-u", "-o", "out/new", "in/ball.gif"}).mOut, HasSubstr("1 file: 1 made"));
    EXPECT_EQ(mRunner.Run({"-o", "out/one.gif", "in/ball.gif"}).mStatus, 0);
    EXPECT_EQ(mRunner.Run({"-o", "out/one.gif", "in/sub/icon.gif"}).mStatus, 1);
    EXPECT_EQ(Read("out/one.gif"), results.at("ball.gif"));
    EXPECT_EQ(mRunner.Run({"-f", "-o", "out/one.gif", "in/sub/icon.gif"}).mStatus, 0);
    EXPECT_EQ(Read("out/one.gif"), results.at("sub/icon.gif"));
}

TEST_F(Modes, AnOutputFolderThatCannotBeRightStopsTheRun) {
    fs::create_directory_symlink(mFolder / "in", mFolder / "link");
    Write("in/other/ball.gif", mBefore["ball.gif"] + "x");
    Write("file", "");
    const std::vector<std::pair<std::vector<std::string>, const char*>> cases = {
        {{"-r", "-o", "link/sub/out", "in"},
         "the output folder 'link/sub/out' lies in 'in', whose files are to be read"},
        {{"-o", "./link/", "in"}, "the output folder './link/' lies in 'in', whose files are to be read"},
        {{"-o", "out", "in", "in/other"},
         "'in/ball.gif' and 'in/other/ball.gif' would become one file in 'out'"},
        {{"-o", "file", "in"}, "'--output' needs a folder, and 'file' is none"},
        {{"-o", "new.gif", "in"}, "'new.gif' is the name of one file: for several results, name a folder"},
        {{"-fo", "in/ball.gif", "in/ball.gif"}, "'in/ball.gif' is one of the files to be read"},
        {{"in/ball.gif", "new.gif"},
         "there is no 'new.gif'; to write the result there: parvigif -o new.gif in/ball.gif"},
    };
    for (const auto& [arguments, text] : cases) {
        ExpectRefusal(arguments, text, 2);
        EXPECT_FALSE(Has("out"));
    }
}

TEST_F(Modes, AFilterWritesTheSmallerPictureOrTheSameBytes) {
    const ProgramResult good = RunOn("in/ball.gif", {"-"});
    EXPECT_EQ(good.mStatus, 0);
    EXPECT_THAT(good.mErr, HasSubstr("  -\n"));
    const ProgramResult bad = RunOn("in/sub/deep/bad.gif", {"-"});
    EXPECT_EQ(bad.mOut, "junk");
    EXPECT_EQ(bad.mErr, "parvigif: -: not a GIF file (code 32)\n");
    EXPECT_EQ(bad.mStatus, 1);
    EXPECT_FALSE(HasTraces());
    Write("empty", "");
    EXPECT_EQ(RunOn("empty", {"-"}).mStatus, 1);
    mRunner.Run({"in/ball.gif"});
    EXPECT_EQ(good.mOut, Read("in/ball.gif"));
}

TEST_F(Modes, NamesMayComeFromAFile) {
    Write("lines", "in/ball.gif\n\nin/none.gif\nin/sub");
    const ProgramResult lines = mRunner.Run({"-n", "--files-from", "lines"});
    EXPECT_THAT(lines.mOut, HasSubstr("  3 files: 2 could"));
    EXPECT_EQ(lines.mErr, "parvigif: in/none.gif: no such file or folder (code 10)\n");
    ExpectRefusal({"--files-from=none", "in"}, "list of names none: No such file or directory", 2);
    EXPECT_THAT(mRunner.Run({"*/*.gif"}).mErr,
                HasSubstr("; patterns work on the names of files only, -r on whole trees\n"));
    Write("lines", "\xef\xbb\xbfin/ball.gif\r\n\r\nin/sub/icon.gif\r\n");
    EXPECT_THAT(mRunner.Run({"-n", "--files-from", "lines"}).mOut, HasSubstr("  2 files: 2 could"));
    Write("nuls", std::string("in/ball.gif\0in/sub/icon.gif\0", 28));
    ExpectRefusal({"--files-from", "nuls", "in/ball.gif"},
                  "nuls: the names in it end in NULs, which takes '--null'", 2);
}

TEST_F(Modes, HiddenFoldersAndWhatIsExcludedAreLeftOut) {
    fs::create_directories(mFolder / "in/.git");
    DrawSample("tiles.gif", "in/.git/tiles.gif");
    const auto list = [&](std::vector<std::string> inOptions) {
        inOptions.insert(inOptions.end(), {"-nr", "--exclude=DEEP", "in"});
        return mRunner.Run(inOptions).mOut;
    };
    EXPECT_THAT(list({}), HasSubstr("  2 files: 2 could"));
    EXPECT_THAT(list({"--hidden"}), HasSubstr("in/.git/tiles.gif"));
    EXPECT_THAT(list({"--exclude=b*.gif"}), HasSubstr("  1 file: 1 could"));
}

TEST_F(Modes, NamesFromAFileMayHoldLineBreaks) {
    using namespace std::string_literals;
    fs::rename(mFolder / "in/ball.gif", mFolder / "in/a\nb.gif");
    Write("nuls", "in/a\nb.gif\0in/sub/icon.gif\0"s);
    EXPECT_THAT(RunOn("nuls", {"-n0", "--files-from=-"}).mOut, HasSubstr("  2 files: 2 could"));
}

TEST_F(Modes, AFileThatGainsTooLittleStaysAsItIs) {
    const auto time = fs::last_write_time(mFolder / "in/sub/icon.gif") - std::chrono::hours(1);
    fs::last_write_time(mFolder / "in/sub/icon.gif", time);
    const ProgramResult result =
        mRunner.Run({"--min-saving=60.5%", "--keep-times", "in/ball.gif", "in/sub/icon.gif"});
    EXPECT_THAT(result.mOut, HasSubstr("  2 files: 1 made smaller, 1 unchanged\n"));
    EXPECT_EQ(Read("in/ball.gif"), mBefore["ball.gif"]);
    EXPECT_EQ(Read("in/sub/icon.gif.BAK"), mBefore["sub/icon.gif"]);
    EXPECT_EQ(fs::last_write_time(mFolder / "in/sub/icon.gif"), time);
    const ProgramResult left = mRunner.Run({"--skip-done", "--min-saving", "1023", "in/ball.gif"});
    EXPECT_THAT(left.mOut, HasSubstr("1 file: 0 made"));
    EXPECT_EQ(left.mErr, "parvigif: in/ball.gif: left as it was: would save only 1022 bytes (44.4%)\n");
    std::string log = ReadTestFile(mRunner.GetOwnFolder() / "state/Norvek/PVGFLog.TXT");
    std::erase(log, '\r');
    EXPECT_THAT(
        log, testing::EndsWith("File Unchanged.\n     left as it was: would save only 1022 bytes (44.4%)\n"));
    const ProgramResult done = mRunner.Run({"--skip-done", "--min-saving", "1022", "in/ball.gif"});
    EXPECT_THAT(done.mOut, HasSubstr("1 file: 1 made")) << "nor is it done for a run that asks for less";
}

TEST_F(Modes, WhatIsDoneIsPassedOverWhateverItsName) {
    const std::string ledger = mRunner.GetOwnFolder() / "state/Norvek/PVGFDone.TXT";
    WriteTestFile(ledger, "damaged");
    EXPECT_THAT(mRunner.Run({"--skip-done", "in"}).mOut, HasSubstr("1 file: 1 made smaller"));
    fs::copy(mFolder / "in/ball.gif", mFolder / "in/copy.gif");
    const ProgramResult again = mRunner.Run({"--skip-done", "in/copy.gif", "in/sub/icon.gif"});
    EXPECT_EQ(again.mErr, "parvigif: in/copy.gif: skipped: already done by an earlier run\n");
    EXPECT_THAT(again.mOut, HasSubstr("1 file: 1 made smaller"));

    // What is done without changing colours is not done for a run that may change them.
    std::string lines = ReadTestFile(ledger);
    EXPECT_THAT(lines, StartsWith("damaged\n"));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3);
    for (std::size_t at = 0; (at = lines.find("lossy", at)) != std::string::npos;)
        lines.replace(at, 5, "lossless");
    WriteTestFile(ledger, lines);
    EXPECT_EQ(mRunner.Run({"--skip-done", "--lossless", "in/ball.gif"}).mOut, "");
    EXPECT_THAT(mRunner.Run({"--skip-done", "in/ball.gif"}).mOut, HasSubstr("1 file: 0 made smaller"));

    // Without being asked: left alone, delivered, and tried again with other options.
    const std::string ball = Read("in/ball.gif");
    EXPECT_THAT(mRunner.Run({"-v", "in/ball.gif"}).mErr,
                HasSubstr("in/ball.gif: left as it was: an earlier run has finished with it\n"));
    EXPECT_EQ(mRunner.Run({"-o", "out", "in/ball.gif"}).mErr,
              "parvigif: 1 file is as an earlier run left it; --again tries once more\n");
    EXPECT_EQ(Read("out/ball.gif"), ball);
    for (const char* option : {"--again", "--tolerance=8", "--allow-crop"})
        EXPECT_EQ(mRunner.Run({option, "in/ball.gif"}).mErr, "") << option;
}

TEST_F(Modes, AFileThatAnotherProcessWorksOnIsLeftToIt) {
    const std::string data = mRunner.GetOwnFolder() / "state/Norvek";
    fs::create_directories(data);
    fs::create_symlink("ball.gif", mFolder / "in/link.gif");
    {
        const WnFileClaim claim(data, (mFolder / "in/link.gif").c_str());
        EXPECT_TRUE(claim.IsMine());
        const ProgramResult result = mRunner.Run({"in/ball.gif", "in/sub/icon.gif"});
        EXPECT_EQ(result.mErr, "parvigif: in/ball.gif: skipped: another run is working on it\n");
        EXPECT_EQ(Read("in/ball.gif"), mBefore["ball.gif"]);
        EXPECT_THAT(result.mOut, HasSubstr("1 file: 1 made smaller"));
        WriteTestFile(mFolder / "in/ball.gif.BAK", mBefore["ball.gif"]);
        EXPECT_EQ(mRunner.Run({"--restore", "in/ball.gif"}).mErr,
                  "parvigif: in/ball.gif: not restored: another run is working on it\n");
    }
    EXPECT_THAT(mRunner.Run({"in/ball.gif"}).mOut, HasSubstr("1 file: 1 made smaller"));
}

} // namespace
