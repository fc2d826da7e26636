// Several files at once look like one after the other, whatever becomes of those that work on them.

#include <csignal>

#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <unistd.h>

#include "tests/support/programtest.h"
#include "win/crew/creworder.h"
#include "win/crew/crewrecord.h"

namespace {

using testing::HasSubstr;

class Jobs : public ProgramTest {
protected:
    /** Twenty-odd files of all kinds in a folder, always the same. */
    void MakeLibrary() {
        std::filesystem::remove_all(mFolder / "pics");
        std::filesystem::create_directory(mFolder / "pics");
        for (const SamplePicture& picture : GetSamplePictures())
            for (const std::string number : {"1 ", "2 "})
                picture.mDraw(mFolder / ("pics/" + number + picture.mFileName));
        Write("pics/a backup.gif.BAK", "bytes");
        Write("pics/damaged.gif", "GIF89a");
        Write("pics/empty.gif", "");
    }

    std::string Compare(std::vector<std::string> inArguments) {
        std::string outputs;
        Files files;
        for (const std::string jobs : {"-j1", "-j3"}) {
            MakeLibrary();
            std::filesystem::remove_all(mFolder / "out");
            std::vector<std::string> arguments = {jobs, "--again",
                                                  "pics"}; // the second is to have as much to do
            arguments.insert(arguments.end(), inArguments.begin(), inArguments.end());
            const ProgramResult result = mRunner.Run(arguments);
            const std::string output = result.mOut + result.mErr + std::to_string(result.mStatus);
            if (jobs == "-j1") {
                outputs = output;
                files = ReadAll();
            }
            EXPECT_EQ(output, outputs);
            EXPECT_EQ(ReadAll(), files);
        }
        return outputs;
    }
};

TEST_F(Jobs, OutputAndFilesAreThoseOfOneAfterTheOther) {
    EXPECT_THAT(Compare({"-v"}), HasSubstr("12 made smaller, 1 failed"));
    Compare({"--json", "--no-backup", "--lossless"});
    Compare({"--report", "page.html", "--min-saving", "2%"});
    Compare({"-o", "out", "--keep-times"});
    Compare({"-n", "--json"});
    const std::string totals = mRunner.Run({"--totals"}).mOut;
    mRunner.Run({"-j3", "pics", "--no-backup"});
    EXPECT_NE(mRunner.Run({"--totals"}).mOut, totals);
}

/** Ids of the processes that another has started. */
std::vector<pid_t> FindChildren(pid_t inParent) {
    const std::string task = "/proc/" + std::to_string(inParent) + "/task/" + std::to_string(inParent);
    std::ifstream list(task + "/children");
    return {std::istream_iterator<pid_t>(list), {}};
}

TEST_F(Jobs, AWorkerThatEndsCostsAtMostItsFile) {
    MakeLibrary();
    const Files originals = ReadAll("pics");
    int results[2];
    ASSERT_EQ(pipe2(results, O_CLOEXEC), 0);
    const pid_t process = mRunner.Start({"-j2", "pics"}, results[1]);
    close(results[1]);
    std::vector<pid_t> workers;
    while (workers.empty() && kill(process, 0) == 0)
        workers = FindChildren(process);
    for (const pid_t worker : workers)
        kill(worker, SIGKILL);
    char byte = 0;
    while (read(results[0], &byte, 1) > 0) {
    }
    close(results[0]);
    EXPECT_EQ(mRunner.Finish(process).mStatus, 1); // one file is damaged, too
    const Files files = ReadAll("pics");
    for (const auto& [name, bytes] : originals)
        EXPECT_TRUE(files.at(name) == bytes || files.at(name + ".BAK") == bytes) << name;
    EXPECT_NE(files, originals); // others took over
}

TEST(CrewOrder, WhatWouldEndLastGoesFirst) {
    CrewOrder order({10, 30, 50, 10, 100}, 2);
    std::vector<std::size_t> taken;
    while (!order.IsEmpty())
        taken.push_back(order.TakeNext());
    EXPECT_THAT(taken, testing::ElementsAre(0, 4, 2, 1, 3));
}

TEST(CrewRecord, CutsArriveWholeAndNonsenseIsNoticed) {
    MizerFileResult result, read;
    result.mPath = "cat.gif";
    result.Fail(NvErrorCode(28, 5, "reader", 7));
    result.mWorstLook.mSsim = 0.5;
    const std::string bytes = CrewPack(CrewRecord::Kind::km_Done, result);
    CrewInput input;
    input.Add(bytes.substr(0, 20));
    EXPECT_FALSE(input.Take());
    input.Add(bytes.substr(20));
    auto record = input.Take();
    ASSERT_TRUE(record && CrewUnpack(*record, read));
    EXPECT_EQ(read.mPath, "cat.gif");
    EXPECT_EQ(read.mError->GetSystemError(), 5);
    EXPECT_EQ(read.mWorstLook.mSsim, 0.5);
    record->mBody.pop_back();
    EXPECT_FALSE(CrewUnpack(*record, read));
    input.Add("\x7f-------");
    EXPECT_FALSE(input.Take());
    EXPECT_TRUE(input.IsBroken());
}

} // namespace
