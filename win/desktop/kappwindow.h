#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <windows.h>

#include "win/batch/mizerbrain.h"
#include "win/desktop/kapplist.h"
#include "win/desktop/kapppanel.h"
#include "win/desktop/kapppreview.h"
#include "win/desktop/kappstatus.h"
#include "win/session/sessionlist.h"
#include "win/session/sessionoriginals.h"
#include "wnatom/wnpref.h"

/** The main window: menu, progress panel, the session's files with a preview, status bar. It is the shell
 *  that the batch driver sees, and starts the batches.
 *
 *  Everything happens on one thread. While a batch runs, messages are let through between files and between
 *  the frames of a file, so the window keeps responding; a command that would start another batch only adds
 * to this one. */
class KAppWindow : private MizerShell {
public:
    /** Makes the window and the batch driver.
     *  @throws NvErrorCode, std::bad_alloc */
    KAppWindow();
    ~KAppWindow() override;
    KAppWindow(const KAppWindow&) = delete;
    KAppWindow& operator=(const KAppWindow&) = delete;

    /** Shows it where it was last time. */
    void Show(int inShowCommand);

    /** Adds the files that the names stand for to the batch and starts it. */
    void ProcessNames(const std::vector<std::string>& inNames);

    /** Handles messages until the program is to quit. @return its exit status */
    int Run();

private:
    static LRESULT CALLBACK Procedure(HWND inWindow, UINT inMessage, WPARAM inWParam, LPARAM inLParam);
    LRESULT OnMessage(UINT inMessage, WPARAM inWParam, LPARAM inLParam);
    void OnCommand(int inCommand);
    LRESULT OnNotify(NMHDR* inHeader);
    void OnClose();

    void MakeChildren();
    void SetScale(UINT inDPI);
    void LayOut();
    POINT GetLeastSize() const;
    void Dispatch(MSG& ioMessage);
    bool PumpAll();

    void RunBatch();
    void Cancel();
    void OpenLog();
    void EditPreferences();
    void SortList(SessionList::Column inColumn);
    void ShowSelected();

    // MizerShell
    bool PumpEvents() override { return PumpAll(); }
    bool ShowProgress(double inFraction) override;
    void SetPanelText(MizerControl inControl, const char* inText) override {
        mPanel.SetText(inControl, inText);
    }
    void EnableCommands(bool inEnable) override;
    void ShowMessage(const char* inText, const char* inCaption, Icon inIcon) override;
    void ShowMessage(const std::string& inText, Icon inIcon);
    void BeforeReplace(const char* inPath) override;
    void FileDone(const MizerFileResult& inResult) override;
    void PostQuit() override;

    HWND mWindow = nullptr;
    HFONT mFont = nullptr;
    UINT mDPI = 96;
    HACCEL mAccelerators = nullptr;

    KAppPanel mPanel;
    SessionList mRows;
    SessionOriginals mOriginals;
    std::unique_ptr<KAppList> mList;
    std::unique_ptr<KAppPreview> mPreview;
    std::unique_ptr<KAppStatus> mStatus;

    WnPref mPrefs = MizerOpenPreferences();
    std::unique_ptr<MizerBrain> mBrain;
    std::set<std::string> mNamed; // files of this batch that were named one by one
    std::string mReplaced;        // the current file, once it is being replaced: not to be opened
    ULONGLONG mLastPump = 0;      // milliseconds
    bool mIsClosing = false;
    bool mQuitSeen = false; // taken from the queue by the pump; to be posted again
};
