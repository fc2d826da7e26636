#pragma once

#include <windows.h>

#include "tests/support/ownregistry_win.h"
#include "tests/support/test.h"

/** Runs the real Parvigif.exe and acts on its window like a person: commands, clicks, drops. Reads what the
 *  controls show. Its preferences, log and throw-away files are its own. */
class DesktopRun {
public:
    /** Starts it and waits for the window. */
    explicit DesktopRun(const std::vector<std::string>& inNames = {});

    /** Ends it the hard way if it still runs. */
    ~DesktopRun();
    DesktopRun(const DesktopRun&) = delete;
    DesktopRun& operator=(const DesktopRun&) = delete;

    HWND GetWindow() const { return mWindow; }

    void Choose(int inMenuCommand) const {
        PostMessageW(mWindow, WM_COMMAND, static_cast<WPARAM>(inMenuCommand), 0);
    }
    /** Moves it to a screen of that many dots per inch, as Windows announces it. */
    void MoveToScreen(int inDPI, RECT inPlace) const;
    void Drop(const std::vector<std::string>& inPaths) const;

    /** A dialog or message box of the program. Fails the test when none of that title comes. */
    HWND WaitForDialog(const std::string& inTitle) const;
    bool HasDialog(const std::string& inTitle) const;

    /** Clicks a button of a dialog. */
    static void Click(HWND inDialog, int inControl);
    static bool IsChecked(HWND inDialog, int inControl);
    static bool IsEnabled(HWND inDialog, int inControl);

    HWND GetPanel() const { return FindWindowExW(mWindow, nullptr, L"#32770", nullptr); }
    std::string GetPanelText(int inControl) const { return GetText(GetDlgItem(GetPanel(), inControl)); }
    std::string GetStatus() const;

    /** The list, cell by cell of a row. */
    int CountRows() const;
    std::string GetCell(int inRow, int inColumn) const;
    std::string GetPreviewText() const;

    /** Waits until it holds; fails the test after two minutes. */
    static void WaitFor(const char* inWhat, const std::function<bool()>& inCondition);

    /** Closes the window. @return the exit status */
    DWORD Close();
    DWORD WaitForExit();

    const TestFolder& GetOwnFolder() const { return mOwnFolder; }

private:
    static std::string GetText(HWND inControl);

    TestFolder mOwnFolder;
    TestVariable mTemporary{"TMP", mOwnFolder.GetPath()};
    OwnRegistry mRegistry{mOwnFolder.GetPath()};
    PROCESS_INFORMATION mProcess{};
    HWND mWindow = nullptr;
};
