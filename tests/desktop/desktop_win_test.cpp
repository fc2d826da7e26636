// The desktop application as its users see it: the real program, its window, its files.

#include "samples/samplepictures.h"
#include "tests/support/desktoprun_win.h"
#include "win/desktop/resource.h"

namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

class Desktop : public testing::Test {
protected:
    Desktop() {
        OwnRegistry::ForgetPreferences();
        for (const SamplePicture& picture : GetSamplePictures())
            picture.mDraw(mFolder / picture.mFileName);
    }
    ~Desktop() override { OwnRegistry::ForgetPreferences(); } // whoever comes next in this prefix

    /** A folder that keeps the program busy for a while. */
    std::string MakeManyFiles() {
        const std::string folder = mFolder / "many";
        for (int i = 0; i < 60; ++i)
            for (const SamplePicture& picture : GetSamplePictures())
                WriteTestFile(folder + "/" + std::to_string(i) + picture.mFileName,
                              ReadTestFile(mFolder / picture.mFileName));
        return folder;
    }

    /** Each is as drawn or made smaller with its backup, and nothing else is in the folder. */
    static void ExpectWholeFiles(const std::string& inFolder) {
        for (const auto& entry : fs::directory_iterator(inFolder)) {
            const std::string path = entry.path().string();
            if (path.ends_with(".BAK"))
                EXPECT_LT(ReadTestFile(path.substr(0, path.size() - 4)).size(), ReadTestFile(path).size())
                    << path;
            else
                EXPECT_TRUE(path.ends_with(".gif")) << path;
        }
    }

    static bool IsBusy(const DesktopRun& inRun) {
        return DesktopRun::IsEnabled(inRun.GetPanel(), IDC_CANCEL);
    }
    static void WaitForEnd(const DesktopRun& inRun, const char* inStatus) {
        DesktopRun::WaitFor(inStatus, [&] {
            return inRun.GetStatus().find(inStatus) != std::string::npos && !IsBusy(inRun);
        });
    }

    static void WaitForPreview(const DesktopRun& inRun, const char* inText) {
        DesktopRun::WaitFor(inText, [&] { return inRun.GetPreviewText() == inText; });
    }

    TestFolder mFolder;
};

TEST_F(Desktop, WhatIsDroppedIsMadeSmallerShownAndCounted) {
    const std::string foreign = mFolder / "\xe6\x97\xa5 \xd0\xb6.gif";
    WriteTestFile(mFolder / "notes.txt", "x");
    WriteTestFile(mFolder / "other/broken.gif", "nonsense");
    MoveFileW(NvWiden(mFolder / "icon.gif").c_str(), NvWiden(foreign).c_str());
    DesktopRun run;
    EXPECT_EQ(run.GetPanelText(IDC_FILES_TO_DATE), "0 Files processed to date.");
    EXPECT_EQ(run.GetPanelText(IDC_THIS_BATCH), "0 bytes saved");
    EXPECT_EQ(run.GetPanelText(IDC_THIS_BATCH_PERCENT), "0.0%");
    EXPECT_FALSE(IsBusy(run) || DesktopRun::IsEnabled(run.GetPanel(), IDC_PAUSE));
    EXPECT_THAT(run.GetPreviewText(), StartsWith("Drop GIF files"));

    run.Drop({mFolder.GetPath(), mFolder / "other/broken.gif", mFolder / "none.gif", mFolder / "notes.txt"});
    WaitForEnd(run, "9 files, 6 made smaller, 2 failed: 21,432 bytes saved");
    EXPECT_EQ(run.GetPanelText(IDC_FILES_TO_DATE), "7 Files processed to date.");
    EXPECT_EQ(run.GetPanelText(IDC_THIS_BATCH), "21432 bytes saved");
    EXPECT_EQ(run.GetPanelText(IDC_THIS_BATCH_PERCENT), "65.4%");
    EXPECT_EQ(run.GetPanelText(IDC_TO_DATE), "21432 bytes saved");
    EXPECT_EQ(run.GetPanelText(IDC_FILE_SIZE), "8 bytes unoptimized");

    std::string table;
    for (int row = 0; row < run.CountRows(); ++row) {
        for (int column = 0; column < 6; ++column)
            table += run.GetCell(row, column) + "|";
        table += "\n";
    }
    EXPECT_THAT(table, HasSubstr("none.gif|||||Failed: no such file or folder (code 10)|\n"));
    EXPECT_THAT(table, HasSubstr("ball.gif|2,301|1,279|1,022|44.4%|Made smaller|\n"));
    EXPECT_THAT(table, HasSubstr("\xe6\x97\xa5 \xd0\xb6.gif|1,112|308|804|72.3%|Made smaller|\n"));
    EXPECT_THAT(table, HasSubstr("broken.gif|8|8|0|0.0%|Failed: not a GIF file (code 32)|\n"));
    EXPECT_THAT(table, HasSubstr("notes.txt|||||Skipped: its name does not end in GIF|\n"));

    EXPECT_EQ(run.Close(), 0u);
    EXPECT_EQ(OwnRegistry::GetPreference("BYTESSAVED"), 21432u);
    EXPECT_EQ(OwnRegistry::GetPreference("FILESPROCESSED"), 7u);
    EXPECT_EQ(ReadTestFile(mFolder / "ball.gif.BAK").size(), 2301u);
    EXPECT_THAT(ReadTestFile(run.GetOwnFolder() / "Norvek/PVGFLog.TXT"),
                HasSubstr("ball.gif\" \r\n     1022 bytes"));
    EXPECT_FALSE(fs::exists("C:\\TEMP.GIF"));
}

TEST_F(Desktop, TheSelectedFilePlaysBeforeAndAfterAlsoWithoutABackup) {
    OwnRegistry::SetPreference("BACKUP", 0);
    DesktopRun run({mFolder / "spinner.gif"});
    WaitForEnd(run, "1 file, 1 made smaller");
    WaitForPreview(run, "Before: 14,937 bytes After: 2,377 bytes");
    run.Drop({mFolder / "spinner.gif"});
    DesktopRun::WaitFor("the second run",
                        [&] { return run.GetPanelText(IDC_FILES_TO_DATE) == "2 Files processed to date."; });
    WaitForEnd(run, "1 file, 1 made smaller: 12,560 bytes saved");
    WaitForPreview(run, "Before: 14,937 bytes After: 2,377 bytes");
    EXPECT_EQ(run.Close(), 0u);
    EXPECT_FALSE(fs::exists(mFolder / "spinner.gif.BAK"));
    for (const auto& entry : fs::directory_iterator(run.GetOwnFolder().GetPath()))
        EXPECT_EQ(entry.path().filename().string(), "Norvek") << "left behind";
}

TEST_F(Desktop, PauseHaltsTheBatchAndCancelEndsIt) {
    const std::string many = MakeManyFiles();
    DesktopRun run;
    run.Drop({many});
    DesktopRun::WaitFor("the batch", [&] { return IsBusy(run) && run.CountRows() > 2; });
    run.Choose(IDM_PAUSE);
    const HWND pause = run.WaitForDialog("OPERATION PAUSED");
    const int rows = run.CountRows();
    Sleep(300);
    EXPECT_EQ(run.CountRows(), rows);
    SendMessageW(pause, WM_COMMAND, IDOK, 0);
    DesktopRun::WaitFor("more files", [&] { return run.CountRows() > rows; });

    DesktopRun::Click(run.GetPanel(), IDC_CANCEL);
    WaitForEnd(run, "Cancelled. ");
    EXPECT_EQ(run.GetPanelText(IDC_THIS_FILE), "");
    EXPECT_LT(run.CountRows(), 360);
    ExpectWholeFiles(many);

    run.Drop({mFolder / "tiles.gif"});
    DesktopRun::WaitFor("another batch",
                        [&] { return fs::exists(mFolder / "tiles.gif.BAK") && !IsBusy(run); });
    EXPECT_EQ(run.Close(), 0u);
}

TEST_F(Desktop, ClosingDuringABatchLeavesFilesWholeAndTotalsRight) {
    const std::string many = MakeManyFiles();
    DesktopRun run({many});
    DesktopRun::WaitFor("the batch", [&] { return IsBusy(run) && run.CountRows() > 2; });
    EXPECT_EQ(run.Close(), 0u);
    ExpectWholeFiles(many);
    DWORD backups = 0;
    for (const auto& entry : fs::directory_iterator(many))
        backups += entry.path().extension() == ".BAK" ? 1 : 0;
    EXPECT_LT(backups, 360u);
    EXPECT_THAT(OwnRegistry::GetPreference("FILESPROCESSED"), AnyOf(backups, backups + 1));
}

TEST_F(Desktop, AScreenOfAnotherResolutionScalesThePanelAndBack) {
    DesktopRun run;
    const HWND cancel = GetDlgItem(run.GetPanel(), IDC_CANCEL);
    const auto placeOf = [](HWND inWindow) {
        RECT rect{};
        GetWindowRect(inWindow, &rect);
        return std::array{rect.left, rect.top, rect.right, rect.bottom};
    };
    const auto sizeOf = [&](HWND inWindow) {
        const auto place = placeOf(inWindow);
        return std::pair(place[2] - place[0], place[3] - place[1]);
    };
    const auto window = placeOf(run.GetWindow()), button = placeOf(cancel);
    const auto panelSize = sizeOf(run.GetPanel()), buttonSize = sizeOf(cancel);
    run.MoveToScreen(192, {0, 0, 1200, 900});
    EXPECT_EQ(sizeOf(run.GetPanel()), std::pair(2 * panelSize.first, 2 * panelSize.second));
    EXPECT_EQ(sizeOf(cancel), std::pair(2 * buttonSize.first, 2 * buttonSize.second));
    EXPECT_GE(sizeOf(run.GetWindow()).first, 2 * panelSize.first);
    run.MoveToScreen(96, {window[0], window[1], window[2], window[3]});
    EXPECT_EQ(placeOf(run.GetWindow()), window);
    EXPECT_EQ(placeOf(cancel), button);
    EXPECT_EQ(run.Close(), 0u);
}

TEST_F(Desktop, PreferencesFollowTheirRulesAndAreStoredByOKAlone) {
    DesktopRun run;
    run.Choose(IDM_PREFERENCES);
    HWND dialog = run.WaitForDialog("Parvigif 1.2 Preferences");
    const auto checked = [&](int inControl) { return DesktopRun::IsChecked(dialog, inControl); };
    const auto enabled = [&](int inControl) { return DesktopRun::IsEnabled(dialog, inControl); };
    EXPECT_TRUE(checked(IDC_BACKUP) && checked(IDC_LOG) && checked(IDC_LOG_ALL));
    EXPECT_FALSE(checked(IDC_OVERWRITE_BACKUPS) || checked(IDC_LOG_RESULTS) || checked(IDC_ALLOW_CROP) ||
                 checked(IDC_LOSSLESS));
    EXPECT_TRUE(enabled(IDC_OVERWRITE_BACKUPS) && enabled(IDC_LOG_ALL) && enabled(IDC_LOG_RESULTS));

    for (const int control :
         {IDC_OVERWRITE_BACKUPS, IDC_BACKUP, IDC_LOG_RESULTS, IDC_LOG, IDC_ALLOW_CROP, IDC_LOSSLESS})
        DesktopRun::Click(dialog, control);
    EXPECT_FALSE(enabled(IDC_OVERWRITE_BACKUPS) || enabled(IDC_LOG_ALL) || enabled(IDC_LOG_RESULTS));
    EXPECT_TRUE(checked(IDC_OVERWRITE_BACKUPS) && checked(IDC_LOG_RESULTS))
        << "disabled ones keep their state";
    DesktopRun::Click(dialog, IDOK);
    DesktopRun::WaitFor("the end of the dialog", [&] { return !IsWindow(dialog); });
    const auto stored = [] {
        std::string values;
        for (const char* name : {"BACKUP", "OBACK", "LOG", "LOGALL", "ALLOWCROP", "LOSSLESS"})
            values += std::to_string(OwnRegistry::GetPreference(name));
        return values;
    };
    DesktopRun::WaitFor("all to be stored",
                        [&] { return stored() == "010011"; }); // the dialog is gone before

    run.Choose(IDM_PREFERENCES);
    dialog = run.WaitForDialog("Parvigif 1.2 Preferences");
    EXPECT_FALSE(checked(IDC_BACKUP) || enabled(IDC_OVERWRITE_BACKUPS));
    DesktopRun::Click(dialog, IDC_BACKUP);
    EXPECT_TRUE(enabled(IDC_OVERWRITE_BACKUPS));
    DesktopRun::Click(dialog, IDCANCEL);
    DesktopRun::WaitFor("the end of the dialog", [&] { return !IsWindow(dialog); });
    EXPECT_EQ(run.Close(), 0u);
    EXPECT_EQ(stored(), "010011");
}

} // namespace
