// A run that is stopped, at any point and by any means, costs no picture.

#include <csignal>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
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

class Interruption : public ProgramTest {
protected:
    /** From now on runs meet a fault, named as tests/support/faultshim.cpp does, at their inAt-th file
     *  operation. */
    void SetFault(const std::string& inFault, int inAt) {
        std::error_code there;
        fs::create_symlink(FAULT_SHIM, mFolder / "faultshim.so", there);
        mRunner.mBeforeStart = [=] {
            setenv("LD_PRELOAD", "./faultshim.so", 1); // a path with a blank would be taken for two
            setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
            return setenv("PARVIGIF_FAULT", (inFault + "=" + std::to_string(inAt)).c_str(), 1) == 0;
        };
    }

    /** Runs with faults of three kinds at one file operation after the other. */
    void ForEachFault(const std::vector<std::string>& inArguments,
                      const std::function<void(const std::string&, const ProgramResult&)>& inCheck) {
        constexpr int operations = 12; // more than the shorter runs have
        for (const std::string fault : {"kill", "tear", "full"}) {
            int hits = 0;
            for (int at = 1; at <= operations; ++at) {
                SCOPED_TRACE(fault + std::to_string(at));
                SetFault(fault, at);
                const ProgramResult result = mRunner.Run(inArguments);
                hits += result.mStatus != 0;
                inCheck(fault, result);
            }
            EXPECT_GE(hits, fault == "tear" ? 1 : 2) << fault;
            EXPECT_LT(hits, operations) << fault;
        }
    }
};

// ---- faults at every single file operation

/** Runs over one picture again and again, with the fault one file operation later each time, until the run no
 *  longer reaches it. */
class FaultEverywhere : public Interruption {
protected:
    FaultEverywhere() {
        DrawSamples();
        mOriginal = Read(km_Name);
        EXPECT_EQ(mRunner.Run({km_Name}).mStatus, 0);
        mFinal = Read(km_Name);
    }

    /** @return how many runs the fault has hit; inCheck sees each result */
    int Repeat(const std::string& inFault, const std::function<bool(const ProgramResult&)>& inCheck) {
        for (int at = 1; at <= km_Operations; ++at) {
            std::ofstream(mFolder / km_Name, std::ios::binary) << mOriginal;
            fs::remove(mFolder / "ball.gif.BAK");
            SetFault(inFault, at);
            const bool wasHit = inCheck(mRunner.Run(mArguments));
            CheckFiles(at);
            if (!wasHit || HasFailure())
                return at - 1;
        }
        return km_Operations;
    }

    /** The picture is whole, and safe when it is no longer the original. */
    void CheckFiles(int inAt) {
        const std::string picture = Read(km_Name);
        mSeen.insert(picture);
        EXPECT_LE(mSeen.size(), 3u) << "old, after the first pass, after the second; operation " << inAt;
        EXPECT_EQ(picture.back(), ';') << "operation " << inAt;
        if (Has("ball.gif.BAK")) {
            EXPECT_EQ(Read("ball.gif.BAK"), mOriginal) << "operation " << inAt;
        } else {
            EXPECT_EQ(picture, mOriginal) << "operation " << inAt;
        }
    }

    static constexpr const char* km_Name = "ball.gif";
    static constexpr int km_Operations = 80; // more than a run over it has
    std::vector<std::string> mArguments = {km_Name};
    std::string mOriginal;
    std::string mFinal;
    std::set<std::string> mSeen;
};

TEST_F(FaultEverywhere, Killed) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{km_Name}, {"--min-saving=1", km_Name}}) {
        mArguments = arguments;
        const int kills =
            Repeat("kill", [](const ProgramResult& inResult) { return inResult.mStatus == -SIGKILL; });
        EXPECT_GT(kills, 15) << "the faults did not reach the program";
        EXPECT_LT(kills, km_Operations);
        EXPECT_EQ(Read(km_Name), mFinal) << "the last run was not hit";
        EXPECT_TRUE(mSeen.contains(mOriginal));
    }
    for (const auto& entry : fs::directory_iterator(mFolder.GetPath()))
        EXPECT_FALSE(entry.path().extension() == ".tmp") << "left over: " << entry.path();
    EXPECT_TRUE(fs::is_empty(mRunner.GetOwnFolder() / "tmp")) << "left over by a killed run";
}

TEST_F(FaultEverywhere, KilledOnTheWayToAnotherFolder) {
    mArguments = {"-o", "out", km_Name};
    int delivered = 0;
    Repeat("kill", [&](const ProgramResult& inResult) {
        EXPECT_EQ(Read(km_Name), mOriginal);
        if (Has("out/ball.gif")) {
            EXPECT_EQ(Read("out/ball.gif"), mFinal) << "whole or absent";
            ++delivered;
            fs::remove(mFolder / "out/ball.gif");
        }
        return inResult.mStatus == -SIGKILL;
    });
    EXPECT_GE(delivered, 1);
    for (const auto& entry : fs::directory_iterator(mFolder / "out"))
        ADD_FAILURE() << "left over: " << entry.path();
}

TEST_F(FaultEverywhere, KilledInTheMiddleOfAWrite) {
    int tears = 0;
    Repeat("tear", [&](const ProgramResult& inResult) {
        tears += inResult.mStatus == -SIGKILL ? 1 : 0;
        return true; // only some operations are writes, so a run that ends well is not the last one to try
    });
    EXPECT_GE(tears, 3) << "scratch file, candidate and backup";
}

TEST_F(FaultEverywhere, DiskFull) {
    // Creating a file on a full disk is a failed open, which has no number of its own.
    const std::string disk = "(no space left on the disk .code 22.|No space left on device .code 1.)\n";
    const int faults = Repeat("full", [&](const ProgramResult& inResult) {
        if (inResult.mStatus == 1) {
            EXPECT_THAT(inResult.mErr,
                        testing::MatchesRegex("parvigif: ball.gif: (no backup could be made: )?" + disk));
            EXPECT_EQ(Read(km_Name), mOriginal);
            return true;
        }
        EXPECT_EQ(inResult.mStatus, 0);
        return Read(km_Name) != mFinal || inResult.mErr != "";
    });
    EXPECT_LT(faults, km_Operations);
    EXPECT_TRUE(mSeen.contains(mOriginal));
}

TEST_F(FaultEverywhere, WritesThatGoWrongUnnoticed) {
    mSeen = {mOriginal, mFinal};
    for (int at = 1; at <= km_Operations / 2; ++at) {
        Write(km_Name, mOriginal);
        SetFault("rot", at);
        mRunner.Run({"--no-backup", km_Name});
        mSeen.insert(Read(km_Name));
        EXPECT_TRUE(Read(km_Name).ends_with(';')) << "operation " << at;
    }
}

TEST_F(FaultEverywhere, WhatCannotBeFlushedReplacesNothing) {
    SetFault("sync", 1);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--no-backup"}, {"--no-backup", "--min-saving=1"}, {"-o", "out"}}) {
        Write(km_Name, mOriginal);
        mArguments = arguments;
        mArguments.emplace_back(km_Name);
        EXPECT_EQ(mRunner.Run(mArguments).mStatus, 1) << arguments.back();
        EXPECT_EQ(Read(km_Name), mOriginal) << arguments.back();
        EXPECT_FALSE(Has("out/ball.gif"));
    }
}

TEST_F(FaultEverywhere, SavedAnewByAnotherProgram) {
    for (const char* option : {"-q", "--min-saving=1"}) {
        int at = 0;
        do {
            fs::remove(mFolder / "saved");
            Write(km_Name, mOriginal);
            fs::remove(mFolder / "ball.gif.BAK");
            SetFault("save", ++at);
            mRunner.Run({option, km_Name});
            const std::string kept = Has("ball.gif.BAK") ? Read("ball.gif.BAK") : mOriginal;
            EXPECT_EQ(Read(km_Name).ends_with('!') || kept.ends_with('!'), Has("saved"))
                << option << ", operation " << at;
        } while (Has("saved"));
        EXPECT_GT(at, 15) << option;
    }
}

TEST_F(FaultEverywhere, SavedAnewOnTheWayToAnotherFolder) {
    int asSaved = 0; // until the result is on its way
    for (int at = 1; at <= 20; ++at) {
        Write(km_Name, mOriginal);
        SetFault("save", at);
        mRunner.Run({"-o", "out", km_Name});
        EXPECT_TRUE(Has("out/ball.gif"));
        asSaved += Has("out/ball.gif") && Read("out/ball.gif") == mOriginal + '!';
        fs::remove(mFolder / "out/ball.gif");
    }
    EXPECT_GT(asSaved, 2);
}

TEST_F(Interruption, RestoringPutsTheWholeOriginalBackOrNothing) {
    DrawSamples();
    const std::string original = Read("ball.gif");
    mRunner.Run({"ball.gif"});
    const std::string smaller = Read("ball.gif");
    ForEachFault({"--restore", "--no-log", "ball.gif"},
                 [&](const std::string&, const ProgramResult& inResult) {
                     const std::string picture = Read("ball.gif");
                     EXPECT_TRUE(picture == original || (inResult.mStatus != 0 && picture == smaller));
                     EXPECT_EQ(Read("ball.gif.BAK"), original);
                     Write("ball.gif", smaller);
                 });
}

TEST_F(Interruption, AContactSheetIsWholeOrAbsent) {
    DrawSamples();
    const std::vector<std::string> arguments = {"--contact-sheet", "sheet.gif", "icon.gif"};
    mRunner.Run(arguments);
    const std::string whole = Read("sheet.gif");
    fs::remove(mFolder / "sheet.gif");
    ForEachFault(arguments, [&](const std::string& inFault, const ProgramResult& inResult) {
        EXPECT_TRUE(Has("sheet.gif") ? Read("sheet.gif") == whole : inResult.mStatus != 0);
        if (inFault == "full" && inResult.mStatus != 0) {
            EXPECT_THAT(inResult.mErr, testing::ContainsRegex("parvigif: sheet.gif: .*[Nn]o space left"));
            EXPECT_FALSE(Has("sheet.gif"));
        }
        fs::remove(mFolder / "sheet.gif");
    });
}

// ---- the user and the reader of the output

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
    EXPECT_THAT(mRunner.Run({"--skip-done", "icon.gif"}).mOut, HasSubstr("1 file, 1 made smaller"));
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

/** Many copies of a picture, and a run over them whose output nobody reads yet: it comes to a halt in the
 *  middle when the pipe is full. */
class LongRun : public Interruption {
protected:
    static constexpr int km_Files = 120;

    LongRun() {
        DrawSample("icon.gif", NameOf(100));
        mOriginal = Read(NameOf(100));
        for (int i = 101; i < 100 + km_Files; ++i)
            Write(NameOf(i), mOriginal);
        EXPECT_EQ(pipe2(mPipe, O_CLOEXEC), 0);
        EXPECT_GT(fcntl(mPipe[1], F_SETPIPE_SZ, 4096), 0);
    }
    ~LongRun() override { close(mPipe[0]); }

    static std::string NameOf(int inNumber) { return "picture-" + std::to_string(inNumber) + ".gif"; }

    void Start() {
        mProcess = mRunner.Start({"."}, mPipe[1]);
        close(mPipe[1]);
        char first = 0;
        EXPECT_EQ(read(mPipe[0], &first, 1), 1)
            << "the first line is the sign that files are being worked on";
        mOutput += first;
    }

    /** Afterwards there is no room for two more lines. */
    void WaitForFullPipe() const {
        constexpr int lineSize = 60; // bytes
        for (int held = 0; held <= 4096 - 2 * lineSize + 1; usleep(1000))
            ASSERT_EQ(ioctl(mPipe[0], FIONREAD, &held), 0);
    }

    /** How many files were made smaller; checks that they are the first ones and that all are whole. */
    int CountDone() {
        int done = 0;
        bool untouched = false;
        for (int i = 100; i < 100 + km_Files; ++i) {
            const bool isDone = Read(NameOf(i)) != mOriginal;
            EXPECT_FALSE(isDone && untouched) << NameOf(i) << " was done before an earlier file";
            untouched = untouched || !isDone;
            if (isDone) {
                EXPECT_EQ(Read(NameOf(i) + ".BAK"), mOriginal);
                EXPECT_EQ(Read(NameOf(i)), Read(NameOf(100)));
            }
            done += isDone ? 1 : 0;
        }
        return done;
    }

    std::string mOriginal;
    std::string mOutput;
    int mPipe[2] = {-1, -1};
    pid_t mProcess = 0;
};

TEST_F(LongRun, CtrlCFinishesTheFileInHandAndTellsWhatWasDone) {
    Start();
    kill(mProcess, SIGINT);
    mOutput += ReadPipe(mPipe[0]);
    const ProgramResult result = mRunner.Finish(mProcess);
    EXPECT_EQ(result.mStatus, 130);
    EXPECT_EQ(result.mErr, "parvigif: cancelled\n");

    const int done = CountDone();
    EXPECT_LT(done, km_Files);
    const std::string files = std::to_string(done) + (done == 1 ? " file, " : " files, ");
    EXPECT_THAT(mOutput, EndsWith("  " + files + std::to_string(done) + " made smaller\n"));
    const std::uintmax_t saved =
        (mOriginal.size() - Read(NameOf(100)).size()) * static_cast<std::size_t>(done);
    EXPECT_THAT(ReadTestFile(mRunner.GetOwnFolder() / "user/Norvek/Parvigif/1.x.ini"),
                HasSubstr("BYTESSAVED=" + std::to_string(saved) + "\n"));
}

TEST_F(LongRun, ASecondCtrlCEndsAtOnce) {
    Start();
    WaitForFullPipe(); // it cannot end by itself between the two
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(mProcess), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0) {
        kill(mProcess, SIGINT); // two that come at once count as one
        usleep(1000);
    }
    EXPECT_EQ(mRunner.Finish(mProcess).mStatus, -SIGINT);
    EXPECT_LT(CountDone(), km_Files);
}

TEST_F(LongRun, AClosedPipeIsAQuietEnd) {
    Start();
    close(mPipe[0]);
    const ProgramResult result = mRunner.Finish(mProcess);
    EXPECT_EQ(result.mStatus, -SIGPIPE);
    EXPECT_EQ(result.mErr, "");
    EXPECT_LT(CountDone(), km_Files);
    EXPECT_THAT(ReadTestFile(mRunner.GetOwnFolder() / "user/Norvek/Parvigif/1.x.ini"),
                HasSubstr("BYTESSAVED="));
}

} // namespace
