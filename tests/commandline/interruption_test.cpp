// A run that the user stops, or whose streams are gone, costs no picture.

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/programtest.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
namespace fs = std::filesystem;

std::string ReadPipe(int inPipe) {
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(inPipe, buffer, sizeof(buffer))) > 0;)
        text.append(buffer, static_cast<std::size_t>(count));
    return text;
}

using Interruption = ProgramTest;

TEST_F(Interruption, StreamsThatAreGoneCostNoPicture) {
    DrawSamples();
    const std::string original = Read("ball.gif");
    int remarks[2];
    ASSERT_EQ(pipe2(remarks, O_CLOEXEC), 0);
    close(remarks[0]);
    mRunner.mBeforeStart = [&] { return dup2(remarks[1], STDERR_FILENO) >= 0; };
    mRunner.mInput = mFolder / "ball.gif";
    const ProgramResult filtered = mRunner.Run({"-"});
    close(remarks[1]);
    EXPECT_EQ(filtered.mStatus, 0);

    mRunner.mBeforeStart = [] { return close(STDOUT_FILENO) == 0; };
    const ProgramResult result = mRunner.Run({"ball.gif"}); // the first file opened gets its number
    EXPECT_EQ(result.mErr, "parvigif: standard output: Bad file descriptor\n");
    EXPECT_EQ(result.mStatus, 1);
    EXPECT_EQ(Read("ball.gif"), filtered.mOut);
    EXPECT_EQ(Read("ball.gif.BAK"), original);
}

TEST_F(Interruption, LimitsAndPipesInThePlaceOfFilesCostNoPictureAndNoTime) {
    DrawSample("icon.gif", "icon.gif");
    const std::string original = Read("icon.gif");
    mRunner.mBeforeStart = [] {
        const rlimit limit{100, RLIM_INFINITY};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };
    const ProgramResult result = mRunner.Run({"--no-log", "icon.gif"});
    mRunner.mBeforeStart = {};
    EXPECT_EQ(result.mStatus, 1);
    EXPECT_THAT(result.mErr, HasSubstr("(code 22)"));
    EXPECT_EQ(Read("icon.gif"), original);

    const std::string data = mRunner.GetOwnFolder() / "state/Norvek";
    fs::create_directories(data);
    for (const char* name : {"/PVGFLog.TXT", "/PVGFDone.TXT"})
        mkfifo((data + name).c_str(), 0600);
    EXPECT_THAT(mRunner.Run({"--skip-done", "icon.gif"}).mOut, HasSubstr("1 file: 1 made smaller"));
}

TEST_F(Interruption, CtrlCLeavesNoContactSheet) {
    DrawSamples();
    std::vector<std::string> names = {"--contact-sheet", "sheet.gif"};
    for (int i = 100; i < 300; ++i) {
        names.push_back("bad-" + std::to_string(i) + ".gif");
        WriteTestFile(mFolder / names.back(), "no picture");
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
    const std::string text = ReadPipe(complaints[0]);
    EXPECT_EQ(mRunner.Finish(process).mStatus, 130);
    EXPECT_THAT(text, EndsWith("bad-299.gif: not a GIF file (code 32)\nparvigif: cancelled\n"));
    EXPECT_FALSE(Has("sheet.gif"));
    close(complaints[0]);
}

TEST_F(Interruption, AClosedPipeIsAQuietEnd) {
    DrawSamples();
    const std::string last = Read("tiles.gif");
    int lines[2];
    ASSERT_EQ(pipe2(lines, O_CLOEXEC), 0);
    close(lines[0]);
    const ProgramResult result = mRunner.Finish(mRunner.Start({"."}, lines[1]));
    close(lines[1]);
    EXPECT_EQ(result.mStatus, -SIGPIPE);
    EXPECT_EQ(result.mErr, "");
    EXPECT_EQ(Read("tiles.gif"), last);
    EXPECT_THAT(ReadTestFile(mRunner.GetOwnFolder() / "user/Norvek/Parvigif/1.x.ini"),
                HasSubstr("BYTESSAVED="));
}

} // namespace
