// The two passes: what they replace, when the backup is made, and that nothing stops them halfway.

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TestFrame Textured(TestTexture inTexture, std::uint32_t inSize, std::uint32_t inColors,
                   std::uint32_t inSeed) {
    TestRandom random(inSeed);
    TestFrame frame;
    frame.mWidth = frame.mHeight = inSize;
    frame.mPixels = RandomPixels(random, inTexture, inSize, inSize, inColors);
    return frame;
}

/** Frames that repeat most of what stands there already, one of them put back: every step has work to do, and
 *  both passes find something. */
TestGIF Wasteful() {
    TestGIF gif =
        Movie({Textured(TestTexture::km_Dither, 40, 8, 1), Textured(TestTexture::km_Dither, 40, 8, 1),
               Textured(TestTexture::km_Noise, 20, 16, 2), Textured(TestTexture::km_Dither, 40, 8, 1)});
    gif.mFrames[1].mDisposal = 3;
    for (TestFrame& frame : gif.mFrames)
        frame.mDelay = 7;
    return gif;
}

/** Only the second pass can shrink it: flattened, its last frame would have to show the noise again. */
TestGIF OnlyToBeCropped() {
    TestGIF gif = Movie({Textured(TestTexture::km_Noise, 30, 15, 3),
                         Textured(TestTexture::km_Sparse, 30, 1, 4), Picture("3", 7, 7)});
    gif.mFrames[1].mDisposal = 3;
    gif.mFrames[1].mTransparent = 15;
    for (std::size_t i = 0; i < 300; ++i)
        gif.mFrames[1].mPixels[i] = 15;
    return gif;
}

class PassesTest : public OptimizerTest {
protected:
    /** In a child process: no file may grow beyond inRoom bytes. The exit status is the error's code. */
    void OptimizeAndExit(const std::string& inPath, rlim_t inRoom) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{inRoom, inRoom};
        setrlimit(RLIMIT_FSIZE, &limit);
        exit(static_cast<int>(CodeOf([&] { Optimize(inPath); })));
    }

    void ExpectNothingLeftOver() {
        EXPECT_THAT(Names("pictures"), ElementsAre("test.gif"));
        EXPECT_THAT(Names("scratch"), IsEmpty());
    }
};

TEST_F(PassesTest, TheBackupIsAskedForOnceWithTheOriginalStillThere) {
    const TestGIF gif = Wasteful();
    const std::string path = Write(gif);
    EXPECT_LT(Optimize(path), EncodeGIF(gif).size());
    EXPECT_THAT(mHost.mBackups, ElementsAre(EncodeGIF(gif)));
    EXPECT_TRUE(std::ranges::is_sorted(mHost.mProgress)) << "progress never goes back";
    EXPECT_LT(mHost.mProgress.back(), 1.0);
    ExpectNothingLeftOver();
}

TEST_F(PassesTest, TheSecondPassAloneMayReplaceAndMakesTheBackupThen) {
    class Host : public TestHost {
    public:
        void BackupFile(const char* inPath) override {
            mAt = mProgress.back();
            TestHost::BackupFile(inPath);
        }
        double mAt = 0.0;
    } host;
    const TestGIF gif = OnlyToBeCropped();
    const std::string path = Write(gif);
    PvOptimizer optimizer(mPrefs, host);
    EXPECT_LT(optimizer.OptimizeGIFFile(path.c_str(), static_cast<std::uint32_t>(EncodeGIF(gif).size())),
              EncodeGIF(gif).size());
    EXPECT_THAT(host.mBackups, ElementsAre(EncodeGIF(gif)));
    EXPECT_GE(host.mAt, 0.75) << "the second pass";
    const TestComparison comparison = CompareGIFs(gif, ReadGIF(path));
    EXPECT_EQ(comparison.mDifference, "");
    EXPECT_EQ(ReadGIF(path).mFrames[1].mDisposal, 3u) << "the second pass restores as before";
}

TEST_F(PassesTest, AFileThatCannotShrinkKeepsItsBytesAndNeedsNoBackup) {
    const std::string path = Write(Wasteful());
    std::uint32_t before = 0;
    std::uint32_t size = Optimize(path);
    do {
        before = size;
        size = Optimize(path);
    } while (size < before);
    const std::string bytes = ReadTestFile(path);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    mHost.mBackups.clear();
    EXPECT_EQ(Optimize(path), size);
    struct stat statusAfter {};
    ASSERT_EQ(stat(path.c_str(), &statusAfter), 0);
    EXPECT_EQ(ReadTestFile(path), bytes);
    EXPECT_EQ(statusAfter.st_ino, status.st_ino) << "it is not even rewritten";
    EXPECT_THAT(mHost.mBackups, IsEmpty());
}

TEST_F(PassesTest, StoppedAtAnyMomentTheFileIsTheOriginalOrAWholeResult) {
    const TestGIF gif = Wasteful();
    const std::string original = EncodeGIF(gif);
    Optimize(Write(gif));
    const std::size_t reports = mHost.mProgress.size();
    EXPECT_GT(reports, 20u);
    std::size_t cancelled = 0;
    for (std::size_t at = 0; at < reports; ++at) {
        SCOPED_TRACE(at);
        mHost = TestHost();
        mHost.mStopAt = at;
        const std::string path = Write(gif);
        const std::uint32_t code = CodeOf([&] { Optimize(path); });
        EXPECT_EQ(mHost.mProgress.size(), at + 1) << "it stops at once";
        if (code == NvErrorCode::km_Cancelled) {
            ++cancelled;
            EXPECT_EQ(ReadTestFile(path), original);
            EXPECT_THAT(mHost.mBackups, IsEmpty());
        } else {
            EXPECT_EQ(code, 0u) << "the first pass has replaced it already";
            EXPECT_LT(ReadTestFile(path).size(), original.size());
            EXPECT_EQ(CompareGIFs(gif, ReadGIF(path)).mDifference, "");
            EXPECT_GE(mHost.mProgress.back(), 0.75);
        }
        ExpectNothingLeftOver();
    }
    EXPECT_GT(cancelled, reports / 2);
    EXPECT_LT(cancelled, reports);
}

TEST_F(PassesTest, WithoutItsBackupAFileIsNotReplaced) {
    for (const TestGIF& gif : {Wasteful(), OnlyToBeCropped()}) {
        mHost.mBackupError = NvErrorCode::km_Failure;
        const std::string path = Write(gif);
        EXPECT_EQ(CodeOf([&] { Optimize(path); }), 1u);
        EXPECT_EQ(ReadTestFile(path), EncodeGIF(gif));
        ExpectNothingLeftOver();
    }
}

TEST_F(PassesTest, AReadOnlyFileOrFolderIsToldBeforeTheBackup) {
    const std::string path = Write(Wasteful());
    for (const std::string& readOnly : {path, mFolder / "pictures"}) {
        const mode_t writable = readOnly == path ? 0644 : 0755;
        ASSERT_EQ(chmod(readOnly.c_str(), writable & 0555), 0);
        EXPECT_EQ(CodeOf([&] { Optimize(path); }), 5u);
        ASSERT_EQ(chmod(readOnly.c_str(), writable), 0);
        EXPECT_EQ(ReadTestFile(path), EncodeGIF(Wasteful()));
        EXPECT_THAT(mHost.mBackups, IsEmpty());
        ExpectNothingLeftOver();
    }
}

TEST_F(PassesTest, AFullDiskKeepsTheFile) {
    // Whatever the disk still takes, it is less than the result.
    const std::string path = Write(Wasteful());
    for (const rlim_t room : {0, 1, 100, 300}) {
        EXPECT_EXIT(OptimizeAndExit(path, room), testing::ExitedWithCode(22), "");
        EXPECT_EQ(ReadTestFile(path), EncodeGIF(Wasteful()));
        ExpectNothingLeftOver();
    }
}

} // namespace
