// What the window shows of a session: the table of files, the settings of the dialog, the originals, the
// movies.

#include "tests/batch/batchtest.h"
#include "win/session/gifmovie.h"
#include "win/session/gifpicture.h"
#include "win/session/sessionlist.h"
#include "win/session/sessionoriginals.h"

namespace {

using testing::ElementsAre;
using Column = SessionList::Column;
namespace fs = std::filesystem;

MizerFileResult Result(const std::string& inPath, MizerStatus inStatus, std::uint32_t inOriginal,
                       std::uint32_t inNew) {
    MizerFileResult result;
    result.mPath = inPath;
    result.mStatus = inStatus;
    result.mOriginalSize = inOriginal;
    result.mNewSize = inNew;
    return result;
}

std::vector<std::string> TextsOf(const SessionList& inList, Column inColumn) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < inList.GetCount(); ++i)
        texts.push_back(inList.GetText(i, inColumn));
    return texts;
}

TEST(Session, EachColumnSortsByWhatItMeansAndTurnsRound) {
    SessionList list;
    list.Add(Result("C:\\x\\b.gif", MizerStatus::km_Smaller, 1234567, 1000000), "");
    list.Add(Result("/y/a.gif", MizerStatus::km_Unchanged, 900, 900), "");
    list.AddFailure("none.gif", "no such file");
    list.Add(Result("c.gif", MizerStatus::km_Smaller, 1000, 100), "");
    EXPECT_THAT(TextsOf(list, Column::km_Name), ElementsAre("b.gif", "a.gif", "none.gif", "c.gif"));
    EXPECT_THAT(TextsOf(list, Column::km_Original), ElementsAre("1,234,567", "900", "", "1,000"));
    EXPECT_EQ(list.GetSummary(), "4 files, 2 made smaller, 1 failed: 235,467 bytes saved");

    list.SortBy(Column::km_Percentage);
    EXPECT_EQ(TextsOf(list, Column::km_Percentage).front(), "90.0%");
    list.SortBy(Column::km_Saved);
    EXPECT_THAT(TextsOf(list, Column::km_Saved), ElementsAre("234,567", "900", "0", ""));
    list.SortBy(Column::km_Saved);
    EXPECT_EQ(TextsOf(list, Column::km_Saved).back(), "234,567");
    list.SortBy(Column::km_Name);
    EXPECT_THAT(TextsOf(list, Column::km_Name), ElementsAre("a.gif", "b.gif", "c.gif", "none.gif"));
    EXPECT_EQ(list.Add(Result("bb.gif", MizerStatus::km_Unchanged, 1, 1), ""), 2u) << "the order holds";
    list.SortBy(Column::km_Outcome);
    EXPECT_EQ(TextsOf(list, Column::km_Outcome).front(), "Failed: no such file");
}

TEST(Session, AFileProcessedAgainKeepsItsRowAndItsFirstSize) {
    SessionList list;
    list.Add(Result("a.gif", MizerStatus::km_Smaller, 100, 60), "kept");
    list.Add(Result("a.gif", MizerStatus::km_Unchanged, 60, 60), "");
    EXPECT_EQ(list.GetCount(), 1u);
    EXPECT_EQ(list.GetText(0, Column::km_Saved), "40");
    list.Add(Result("a.gif", MizerStatus::km_Smaller, 80, 70), "");
    EXPECT_EQ(list.GetText(0, Column::km_Saved), "10") << "another file was saved there";
}

class SessionFiles : public BatchTest {};

TEST_F(SessionFiles, OriginalsAreTheBackupsOrCopiesThatGoWithTheSession) {
    const std::string plain = WriteTestFile(mFolder / "plain.gif", "plain");
    const std::string backed = WriteTestFile(mFolder / "backed.gif", "new");
    WriteTestFile(mFolder / "backed.gif.BAK", "of another picture");
    WriteTestFile(mFolder / "backed.gif.2.BAK", "old");
    const TestFolder data;
    const auto findData = [&] { return data.GetPath(); };
    MizerOrigins({findData, nullptr})
        .Add(MizerReadContent(backed.c_str()), MizerReadContent((mFolder / "backed.gif.2.BAK").c_str()),
             MizerOrigins::Work::km_Done);
    std::string copy;
    {
        SessionOriginals originals({findData, nullptr});
        EXPECT_EQ(originals.Find(plain), "");
        originals.Keep(plain);
        originals.Keep(backed);
        WriteTestFile(mFolder / "plain.gif.BAK", "of another picture");
        WriteTestFile(plain, "replaced");
        originals.Keep(plain);
        copy = originals.Find(plain);
        EXPECT_EQ(ReadTestFile(copy), "plain");
        EXPECT_EQ(originals.Find(backed), mFolder / "backed.gif.2.BAK");
    }
    EXPECT_FALSE(fs::exists(copy));
    EXPECT_TRUE(fs::exists(mFolder / "backed.gif.2.BAK"));
}

TEST(Session, AMoviePlaysOnAndOnFromAnEmptyCanvas) {
    GIFMovie movie(std::string(SAMPLES_FOLDER) + "/spinner.gif", 1 << 30);
    const std::uint32_t count = movie.GetFrameCount();
    EXPECT_EQ(count, 12u);
    EXPECT_GE(movie.GetDelay(), 20u);
    GIFPicture first, again;
    first.Render(movie.GetCanvas(), 9, 9, 1);
    for (std::uint32_t i = 1; i <= count; ++i) {
        movie.Advance();
        EXPECT_EQ(movie.GetFrameIndex(), i % count);
    }
    again.Render(movie.GetCanvas(), 9, 9, 1);
    EXPECT_TRUE(std::equal(first.GetPixels(), first.GetPixels() + 9 * 28, again.GetPixels()));
    EXPECT_EQ(CodeOf([] { GIFMovie(std::string(SAMPLES_FOLDER) + "/spinner.gif", 1000); }),
              NvErrorCode::km_OutOfMemory);
}

TEST(Session, APictureIsBottomUpBlueFirstAndPadded) {
    NvGIFPlayer player(3, 2);
    NvColorTable table(2);
    table.SetColor(0, {10, 20, 30});
    table.SetColor(1, {40, 50, 60});
    NvGIFFrameInfo info;
    info.mWidth = info.mHeight = 2;
    player.BeginFrame(info, table);
    const std::array<std::uint8_t, 3> indices = {0, 1, 1};
    player.DrawRow(0, indices.data(), 2);
    player.DrawRow(1, indices.data() + 1, 2);
    GIFPicture picture;
    const auto bytes = [&](std::size_t inCount) {
        return std::vector<int>(picture.GetPixels(), picture.GetPixels() + inCount);
    };
    picture.Render(player, 100, 100, 1);
    EXPECT_THAT(bytes(24), ElementsAre(60, 50, 40, 60, 50, 40, 255, 255, 255, 0, 0, 0, //
                                       30, 20, 10, 60, 50, 40, 255, 255, 255, 0, 0, 0));
    picture.Render(player, 100, 7, 4);
    EXPECT_EQ(std::pair(picture.GetWidth(), picture.GetHeight()), std::pair(11u, 7u)) << "3.5 times";
    EXPECT_THAT(bytes(3), ElementsAre(60, 50, 40));
    picture.Render(player, 1, 1, 4);
    EXPECT_THAT(bytes(3), ElementsAre(120, 113, 107)) << "(30 + 3 * 60 + 2 * 255) / 6 and so on";
}

} // namespace
