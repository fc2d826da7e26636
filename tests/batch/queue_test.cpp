// What a name given by the user puts into the queue, and in which order.

#include <sys/stat.h>

#include "tests/batch/batchtest.h"
#include "win/batch/filequeue.h"

namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

std::vector<std::string> TakeAll(FileQueue& ioQueue) {
    std::vector<std::string> paths;
    while (!ioQueue.IsEmpty())
        paths.emplace_back(ioQueue.TakeFirst().get());
    return paths;
}

class QueueTest : public testing::Test {
protected:
    void Make(std::initializer_list<const char*> inNames) {
        for (const char* name : inNames)
            WriteTestFile(mFolder / name, "x");
    }
    /** What a pattern below the folder finds, without the folder's path. */
    std::vector<std::string> Find(const std::string& inPattern) {
        mQueue.Clear();
        mFound = mQueue.AddFolder((mFolder / inPattern).c_str());
        std::vector<std::string> names;
        for (const std::string& path : TakeAll(mQueue))
            names.push_back(path.substr(mFolder.GetPath().size() + 1));
        return names;
    }

    TestFolder mFolder;
    FileQueue mQueue;
    std::size_t mFound = 0;
};

TEST_F(QueueTest, NamesThatDifferOnlyInTheCaseOfLettersAreOneUnlessBothExist) {
    for (const char* name : {"X/A.GIF", "x/\xc3\xa9.gif", "x/\xc3\x89.gif", "x/[.gif", "x/{.gif"})
        EXPECT_TRUE(mQueue.AddFile((std::string("/none/") + name).c_str())) << "only A to Z fold: " << name;
    EXPECT_FALSE(mQueue.AddFile("/none/x/a.gif"));

    Make({"b.gif", "B.GIF"});
    EXPECT_TRUE(mQueue.AddFile((mFolder / "b.gif").c_str()));
    EXPECT_TRUE(mQueue.AddFile((mFolder / "B.GIF").c_str()))
        << "two files on a system that distinguishes them";
    EXPECT_FALSE(mQueue.AddFile((mFolder / "b.GIF").c_str())) << "does not exist";
}

TEST_F(QueueTest, AFileIsQueuedOnceUnderWhateverNames) {
    Make({"a.gif", "sub/x"});
    fs::create_symlink("a.gif", mFolder / "soft.gif");
    fs::create_hard_link(mFolder / "a.gif", mFolder / "hard.gif");
    EXPECT_TRUE(mQueue.AddFile((mFolder / "soft.gif").c_str()));
    for (const char* name : {"a.gif", "./a.gif", "sub/../a.gif", "hard.gif"})
        EXPECT_FALSE(mQueue.AddFile((mFolder / name).c_str())) << name;
    mQueue.TakeFirst();
    EXPECT_FALSE(mQueue.AddFile((mFolder / "a.gif").c_str())) << "the batch has had it";
    mQueue.Clear();
    EXPECT_TRUE(mQueue.AddFile((mFolder / "a.gif").c_str())) << "a new batch";
}

TEST_F(QueueTest, AFolderGivesItsRegularFilesInBytewiseOrder) {
    Make({"b.gif", "B.GIF", "a.gif", "a.gif.BAK", "notes.txt", "sub/inner.gif"});
    mkfifo((mFolder / "pipe.gif").c_str(), 0600);
    fs::create_symlink("nothing", mFolder / "dangling.gif");
    WriteTestFile(mFolder / "elsewhere/other.gif", "x");
    fs::create_symlink("elsewhere/other.gif", mFolder / "link.gif");
    EXPECT_THAT(Find(""), ElementsAre("B.GIF", "a.gif", "a.gif.BAK", "b.gif", "link.gif", "notes.txt"));
    EXPECT_EQ(mFound, 4u);
    EXPECT_EQ(CodeOf([&] { Find("none/"); }), NvErrorCode::km_FileNotFound);
}

TEST_F(QueueTest, PatternsAreOfStarsAndQuestionMarksOnly) {
    Make({"a.gif", "ab.gif", "abc.GIF", "[a].gif", "a.gift", "x"});
    const std::vector<std::pair<const char*, std::vector<std::string>>> cases = {
        {"*.gif", {"[a].gif", "a.gif", "ab.gif", "abc.GIF"}},
        {"A?.gif", {"ab.gif"}},
        {"*a*b*", {"ab.gif", "abc.GIF"}},
        {"[a].gif", {"[a].gif"}},
        {"**t", {"a.gift"}},
        {"*.png", {}},
    };
    for (const auto& [pattern, names] : cases)
        EXPECT_EQ(Find(pattern), names) << pattern;
}

} // namespace
