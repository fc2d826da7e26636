// A contact sheet is a new file or none, tells what is on it, and leaves everything else alone.

#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "samples/samplepictures.h"
#include "tests/support/programrun.h"

namespace {

using testing::EndsWith;
using testing::StartsWith;
namespace fs = std::filesystem;

class ContactSheetCommand : public testing::Test {
protected:
    ContactSheetCommand() {
        for (const SamplePicture& picture : GetSamplePictures())
            picture.mDraw(mFolder / picture.mFileName);
        mBefore = ReadAll();
    }

    /** Every file below the folder with its bytes. */
    std::map<std::string, std::string> ReadAll() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(mFolder.GetPath()))
            if (entry.is_regular_file())
                files[entry.path().lexically_relative(mFolder.GetPath())] =
                    ReadTestFile(entry.path().string());
        return files;
    }

    void Write(const std::string& inName, const std::string& inBytes) {
        WriteTestFile(mFolder / inName, inBytes);
        mBefore[inName] = inBytes;
    }

    /** Runs, and expects the line, status 1 and no change to any file. */
    void ExpectRefusal(const std::vector<std::string>& inArguments, const std::string& inText) {
        const ProgramResult result = mRunner.Run(inArguments);
        EXPECT_EQ(result.mErr, "parvigif: " + inText + "\n");
        EXPECT_EQ(result.mStatus, 1);
        EXPECT_EQ(result.mOut, "");
        EXPECT_EQ(ReadAll(), mBefore);
    }

    TestFolder mFolder;
    ProgramRunner mRunner{mFolder.GetPath()};
    std::map<std::string, std::string> mBefore;
};

TEST_F(ContactSheetCommand, TellsWhereEachFileIsAndChangesNone) {
    const mode_t mask = umask(027);
    const ProgramResult result = mRunner.Run(
        {"--contact-sheet", "sheet.gif", "icon.gif", "ball.gif", "icon.gif", "s*.gif", "tiles.gif"});
    umask(mask);
    EXPECT_EQ(result.mErr, "parvigif: icon.gif: skipped: the same file was named before\n");
    EXPECT_EQ(result.mStatus, 0);
    EXPECT_EQ(result.mOut, "    Row  Column  File\n"
                           "      1       1  icon.gif\n"
                           "      1       2  ball.gif\n"
                           "      2       1  ./spinner.gif\n"
                           "      2       2  ./sunset.gif\n"
                           "      3       1  tiles.gif\n");
    auto after = ReadAll();
    EXPECT_THAT(after.extract("sheet.gif").mapped(), StartsWith("GIF87a"));
    EXPECT_EQ(after, mBefore);
    struct stat status {};
    EXPECT_EQ(stat((mFolder / "sheet.gif").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u) << "those of any new file";
    EXPECT_FALSE(fs::exists(mRunner.GetOwnFolder() / "state/Norvek"))
        << "nothing was done that belongs there";

    const ProgramResult quiet = mRunner.Run({"--contact-sheet=quiet.gif", "-q", "."});
    EXPECT_EQ(quiet.mOut + quiet.mErr, "");
    EXPECT_TRUE(fs::exists(mFolder / "quiet.gif"));
}

TEST_F(ContactSheetCommand, FilesThatCannotBeReadAreToldAndLeftOut) {
    Write("torn.gif", mBefore["ball.gif"].substr(0, mBefore["ball.gif"].size() / 2));
    Write("notes.gif", "no picture");
    Write("notes.txt", "no picture");
    Write("empty.gif", "");
    const ProgramResult result = mRunner.Run({"--contact-sheet", "sheet.gif", "none.gif", "torn.gif",
                                              "notes.gif", "notes.txt", "empty.gif", "icon.gif"});
    EXPECT_EQ(result.mErr, "parvigif: none.gif: no such file or folder (code 10)\n"
                           "parvigif: torn.gif: the file ends too early (code 18)\n"
                           "parvigif: notes.gif: not a GIF file (code 32)\n"
                           "parvigif: notes.txt: skipped: its name does not end in GIF\n"
                           "parvigif: empty.gif: skipped: empty\n");
    EXPECT_EQ(result.mStatus, 1);
    EXPECT_EQ(result.mOut, "    Row  Column  File\n      1       1  icon.gif\n");
    auto after = ReadAll();
    mRunner.Run({"--contact-sheet", "alone.gif", "icon.gif"});
    EXPECT_EQ(after.extract("sheet.gif").mapped(), ReadTestFile(mFolder / "alone.gif"));
    EXPECT_EQ(after, mBefore);
}

TEST_F(ContactSheetCommand, NeverReplacesAFile) {
    const std::string exists = ": the file exists already (code 31)";
    ExpectRefusal({"--contact-sheet", "icon.gif", "icon.gif", "ball.gif"}, "icon.gif" + exists);
    ExpectRefusal({"--contact-sheet", "./icon.gif", "."}, "./icon.gif" + exists);
    ExpectRefusal({"--contact-sheet", "ball.gif", "icon.gif"}, "ball.gif" + exists);
    fs::create_directory(mFolder / "folder");
    ExpectRefusal({"--contact-sheet", "folder", "icon.gif"}, "folder" + exists);
    fs::create_symlink("nowhere.gif", mFolder / "link.gif");
    ExpectRefusal({"--contact-sheet", "link.gif", "icon.gif"}, "link.gif" + exists);
}

TEST_F(ContactSheetCommand, WithoutASheetThereIsNoFile) {
    ExpectRefusal({"--contact-sheet", "none/sheet.gif", "icon.gif"},
                  "none/sheet.gif: no such file or folder (code 10)");
    Write("notes.gif", "no picture");
    ExpectRefusal({"--contact-sheet", "sheet.gif", "notes.gif"},
                  "notes.gif: not a GIF file (code 32)\n"
                  "parvigif: sheet.gif: not made: there is nothing to show on it");
    ExpectRefusal({"--contact-sheet", "sheet.gif", "--max-memory", "1", "sunset.gif"},
                  "sunset.gif: needs more memory than allowed (code 2)\n"
                  "parvigif: sheet.gif: not made: there is nothing to show on it");
}

TEST_F(ContactSheetCommand, CtrlCLeavesNoSheet) {
    std::vector<std::string> names = {"--contact-sheet", "sheet.gif"};
    for (int i = 100; i < 300; ++i) {
        names.push_back("bad-" + std::to_string(i) + ".gif");
        Write(names.back(), "no picture");
    }
    names.emplace_back("icon.gif");
    int complaints[2]; // holds some of them only, so the program waits for their reader
    ASSERT_EQ(pipe2(complaints, O_CLOEXEC), 0);
    ASSERT_GT(fcntl(complaints[1], F_SETPIPE_SZ, 4096), 0);
    mRunner.mBeforeStart = [&] { return dup2(complaints[1], STDERR_FILENO) >= 0; };
    const pid_t process = mRunner.Start(names, STDOUT_FILENO);
    close(complaints[1]);
    char first = 0;
    ASSERT_EQ(read(complaints[0], &first, 1), 1) << "it is at work";
    kill(process, SIGINT);
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(complaints[0], buffer, sizeof(buffer))) > 0;)
        text.append(buffer, static_cast<std::size_t>(count));
    close(complaints[0]);
    EXPECT_EQ(mRunner.Finish(process).mStatus, 130);
    EXPECT_THAT(text, EndsWith("bad-299.gif: not a GIF file (code 32)\nparvigif: cancelled\n"));
    EXPECT_EQ(ReadAll(), mBefore);
}

TEST_F(ContactSheetCommand, AKillOrAFullDiskLeavesAWholeSheetOrNone) {
    ASSERT_EQ(mRunner.Run({"--contact-sheet", "whole.gif", "icon.gif"}).mStatus, 0);
    const std::string whole = ReadTestFile(mFolder / "whole.gif");
    fs::create_symlink(FAULT_SHIM, mFolder / "faultshim.so");
    for (const std::string fault : {"kill=", "tear=", "full="}) {
        int hits = 0;
        for (int at = 1; at <= 12; ++at) { // more operations than a run has
            fs::remove(mFolder / "sheet.gif");
            mRunner.mBeforeStart = [&] {
                setenv("LD_PRELOAD", "./faultshim.so", 1);
                setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
                return setenv("PARVIGIF_FAULT", (fault + std::to_string(at)).c_str(), 1) == 0;
            };
            const ProgramResult result = mRunner.Run({"--contact-sheet", "sheet.gif", "icon.gif"});
            const bool isThere = fs::exists(mFolder / "sheet.gif");
            if (isThere) {
                EXPECT_EQ(ReadTestFile(mFolder / "sheet.gif"), whole) << fault << at;
            }
            if (fault == "full=" && result.mStatus != 0) {
                EXPECT_THAT(result.mErr, StartsWith("parvigif: sheet.gif: ")) << at;
                EXPECT_THAT(result.mErr, testing::ContainsRegex("[Nn]o space left")) << at;
                EXPECT_FALSE(isThere) << at;
            }
            hits += result.mStatus != 0;
        }
        EXPECT_GE(hits, fault == "tear=" ? 1 : 2) << fault;
        EXPECT_TRUE(fs::exists(mFolder / "sheet.gif")) << "the last run was not hit: " << fault;
    }
}

TEST_F(ContactSheetCommand, AClosedPipeEndsItQuietlyWithTheSheetMade) {
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    close(pipe[0]);
    const pid_t process = mRunner.Start({"--contact-sheet", "sheet.gif", "icon.gif"}, pipe[1]);
    close(pipe[1]);
    const ProgramResult result = mRunner.Finish(process);
    EXPECT_EQ(result.mStatus, -SIGPIPE);
    EXPECT_EQ(result.mErr, "");
    EXPECT_TRUE(fs::exists(mFolder / "sheet.gif"));
}

} // namespace
