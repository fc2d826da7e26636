#include "win/desktop/kappwindow.h"

#include <new>

#include <shellapi.h>

#include "nvcode2/base/nvwindows_win.h"
#include "win/batch/mizeroutcome.h"
#include "win/desktop/kappopen.h"
#include "win/desktop/kappplacement.h"
#include "win/desktop/kapppreferences.h"
#include "win/desktop/killer.h"
#include "win/desktop/resource.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr const wchar_t* km_Class = L"Parvigif";
constexpr ULONGLONG km_PumpPause = 30; // milliseconds between looks at the messages inside a file

HINSTANCE Instance() {
    return GetModuleHandleW(nullptr);
}

} // namespace

KAppWindow::KAppWindow() {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = &KAppWindow::Procedure;
    windowClass.hInstance = Instance();
    windowClass.hIcon = LoadIconW(Instance(), MAKEINTRESOURCEW(IDI_PARVIGIF));
    windowClass.hIconSm = static_cast<HICON>(LoadImageW(Instance(), MAKEINTRESOURCEW(IDI_PARVIGIF),
                                                        IMAGE_ICON, GetSystemMetrics(SM_CXSMICON),
                                                        GetSystemMetrics(SM_CYSMICON), LR_SHARED));
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)); // the arrow
    windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    windowClass.lpszMenuName = MAKEINTRESOURCEW(IDR_MENU);
    windowClass.lpszClassName = km_Class;
    RegisterClassExW(&windowClass);
    if (!CreateWindowExW(WS_EX_ACCEPTFILES | WS_EX_CONTROLPARENT, km_Class,
                         NvWiden(PvSay(PvText::km_Parvigif)).c_str(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                         CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr,
                         Instance(), this))
        ThrowRuntimeError(NvLastErrno());
    mAccelerators = LoadAcceleratorsW(Instance(), MAKEINTRESOURCEW(IDR_ACCELERATORS));
    MakeChildren();
    mBrain = std::make_unique<MizerBrain>(mPrefs, static_cast<MizerShell&>(*this));
}

KAppWindow::~KAppWindow() {
    mBrain.reset(); // stores the totals
    if (mWindow)
        DestroyWindow(mWindow);
    if (mFont)
        DeleteObject(mFont);
}

void KAppWindow::MakeChildren() {
    mPanel.mOnPause = [this] { mBrain->Pause(); };
    mPanel.mOnCancel = [this] { Cancel(); };
    mPanel.CreateIn(mWindow, IDD_PROGRESS);
    mList = std::make_unique<KAppList>(mWindow, mRows);
    mList->mOnSort = [this](SessionList::Column column) { SortList(column); };
    mList->mOnSelect = [this] { ShowSelected(); };
    mPreview = std::make_unique<KAppPreview>(mWindow);
    mPreview->ShowText(PvSay(PvText::km_DropHint));
    mStatus = std::make_unique<KAppStatus>(mWindow);
    ShowWindow(mPanel.GetWindow(), SW_SHOW);
    SetScale(GetDpiForWindow(mWindow));
    mStatus->SetText(PvSay(PvText::km_Ready));
}

int KAppWindow::Run() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        Dispatch(message);
    return static_cast<int>(message.wParam);
}

void KAppWindow::Dispatch(MSG& ioMessage) {
    if (TranslateAcceleratorW(mWindow, mAccelerators, &ioMessage) || IsDialogMessageW(mWindow, &ioMessage))
        return;
    TranslateMessage(&ioMessage);
    DispatchMessageW(&ioMessage);
}

/** Handles every waiting message. @return whether the program is to quit, or the batch to be cancelled */
bool KAppWindow::PumpAll() {
    mLastPump = GetTickCount64();
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT)
            mQuitSeen = true;
        else
            Dispatch(message);
    }
    return mQuitSeen;
}

bool KAppWindow::ShowProgress(double inFraction) {
    if (GetTickCount64() - mLastPump < km_PumpPause)
        return mQuitSeen;
    mStatus->SetProgress(inFraction);
    return PumpAll();
}

void KAppWindow::ProcessNames(const std::vector<std::string>& inNames) {
    for (const std::string& name : inNames) {
        try {
            if (mBrain->AddNameToQueue(name.c_str()) == MizerBrain::Named::km_NoGIFs)
                mRows.AddFailure(name, MizerReasonWords(MizerReason::km_NoGIFs));
            mNamed.insert(name);
        } catch (const NvErrorCode& error) {
            mRows.AddFailure(name, MizerErrorWords(error));
        }
    }
    if (inNames.empty())
        return;
    mList->Refresh();
    RunBatch();
}

/** Files that fail are shown in the list, and the rest of the batch is processed. */
void KAppWindow::RunBatch() {
    if (mBrain->IsBusy())
        return; // what was added is part of the batch that runs
    mStatus->SetText(PvSay(PvText::km_AtWork));
    mStatus->ShowProgress(true);
    const bool isCancelled = !mBrain->ProcessWholeQueue();
    mNamed.clear();
    mReplaced.clear();
    mStatus->ShowProgress(false);
    const std::string summary = mRows.GetSummary();
    mStatus->SetText(isCancelled       ? PvSay(PvText::km_CancelledAfter, {summary})
                     : summary.empty() ? PvSay(PvText::km_Ready)
                                       : summary);
    if (!mList->GetSelected() && mRows.GetCount() != 0)
        mList->Select(0);
    if (mQuitSeen)
        PostQuitMessage(0);
    else if (mIsClosing)
        mBrain->ProcessQueue(); // nothing is queued any more: ends the program
}

void KAppWindow::FileDone(const MizerFileResult& inResult) {
    mReplaced.clear();
    const bool isWorthARow = inResult.mStatus != MizerStatus::km_Skipped || mNamed.contains(inResult.mPath);
    if (!isWorthARow)
        return;
    const std::size_t row = mRows.Add(inResult, mOriginals.Find(inResult.mPath));
    mList->Refresh();
    const auto selected = mList->GetSelected();
    if (!selected)
        mList->Reveal(row);
    if (!selected || mRows.GetRow(*selected).mPath == inResult.mPath)
        ShowSelected();
    mStatus->SetText(PvSay(PvText::km_AtWorkOn, {mRows.GetSummary()}));
}

void KAppWindow::BeforeReplace(const char* inPath) {
    mReplaced = inPath;
    mPreview->Release(mReplaced); // Windows replaces no file that is open for reading
    mOriginals.Keep(mReplaced);
}

void KAppWindow::ShowSelected() {
    const auto selected = mList->GetSelected();
    if (!selected)
        mPreview->ShowText(PvSay(mRows.GetCount() == 0 ? PvText::km_DropHint : PvText::km_SelectHint));
    else if (mRows.GetRow(*selected).mPath == mReplaced)
        mPreview->ShowText("");
    else
        mPreview->Show(mRows.GetRow(*selected));
}

void KAppWindow::SortList(SessionList::Column inColumn) {
    mRows.SortBy(inColumn);
    mList->Refresh();
}

void KAppWindow::EnableCommands(bool inEnable) {
    const HWND focus = GetFocus();
    mPanel.EnableButtons(inEnable);
    if (!inEnable && focus && IsChild(mPanel.GetWindow(), focus))
        SetFocus(mList->GetWindow()); // a disabled button would swallow the keyboard
    MENUITEMINFOW item{};
    item.cbSize = sizeof(item);
    item.fMask = MIIM_STATE;
    item.fState = inEnable ? MFS_ENABLED : MFS_GRAYED;
    for (const UINT command : {IDM_PAUSE, IDM_CANCEL})
        SetMenuItemInfoW(GetMenu(mWindow), command, FALSE, &item);
}

void KAppWindow::ShowMessage(const char* inText, const char* inCaption, Icon inIcon) {
    MessageBoxW(mWindow, NvWiden(inText).c_str(), NvWiden(inCaption).c_str(),
                inIcon == Icon::km_Stop ? MB_ICONHAND : MB_OK);
}

void KAppWindow::ShowMessage(const std::string& inText, Icon inIcon) {
    ShowMessage(inText.c_str(), PvSay(PvText::km_Parvigif).c_str(), inIcon);
}

void KAppWindow::PostQuit() {
    DestroyWindow(mWindow);
}

void KAppWindow::Cancel() {
    if (mBrain->IsBusy())
        mBrain->Cancel();
}

void KAppWindow::OpenLog() {
    const std::string path = mBrain->GetLogPath();
    if (WnGetFileKind(path.c_str()) == WnFileKind::km_Missing)
        return ShowMessage(PvSay(PvText::km_NoLogYet), Icon::km_None);
    const auto result = reinterpret_cast<std::intptr_t>(
        ShellExecuteW(mWindow, L"open", NvWiden(path).c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    if (result <= 32) // an error code
        ShowMessage(PvSay(PvText::km_NoTextProgram, {path}), Icon::km_Stop);
}

void KAppWindow::EditPreferences() {
    KAppPreferences dialog(MizerSettings::Read(mPrefs));
    if (dialog.Run(mWindow))
        dialog.GetSettings().Write(mPrefs);
}

void KAppWindow::OnCommand(int inCommand) {
    switch (inCommand) {
    case IDM_OPEN_FILES:
        return ProcessNames(KAppChooseFiles(mWindow));
    case IDM_OPEN_FOLDER:
        if (const std::string folder = KAppChooseFolder(mWindow); !folder.empty())
            ProcessNames({folder});
        return;
    case IDM_EXIT:
        return OnClose();
    case IDM_OPEN_LOG:
        return OpenLog();
    case IDM_CLEAR_LOG:
        return mBrain->ClearLog();
    case IDM_PREFERENCES:
        return EditPreferences();
    case IDM_ABOUT:
        KAppDialog().RunModal(mWindow, IDD_ABOUT);
        return;
    case IDM_PAUSE:
        if (mBrain->IsBusy())
            mBrain->Pause();
        return;
    case IDM_CANCEL:
    case IDCANCEL: // Escape
        return Cancel();
    default:
        return;
    }
}

/** A batch that runs is cancelled first; the window goes when it has ended. */
void KAppWindow::OnClose() {
    mIsClosing = true;
    mBrain->RequestQuit();
    if (mBrain->IsBusy())
        mBrain->Cancel();
    else
        mBrain->ProcessQueue();
}

LRESULT KAppWindow::OnNotify(NMHDR* inHeader) {
    return mList && inHeader->hwndFrom == mList->GetWindow() ? mList->OnNotify(inHeader) : 0;
}

LRESULT CALLBACK KAppWindow::Procedure(HWND inWindow, UINT inMessage, WPARAM inWParam, LPARAM inLParam) {
    if (inMessage == WM_NCCREATE) {
        auto* const window =
            static_cast<KAppWindow*>(reinterpret_cast<const CREATESTRUCTW*>(inLParam)->lpCreateParams);
        SetWindowLongPtrW(inWindow, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window));
        window->mWindow = inWindow;
    }
    auto* const window = reinterpret_cast<KAppWindow*>(GetWindowLongPtrW(inWindow, GWLP_USERDATA));
    if (!window)
        return DefWindowProcW(inWindow, inMessage, inWParam, inLParam);
    try {
        return window->OnMessage(inMessage, inWParam, inLParam);
    } catch (const std::bad_alloc&) { // nothing may be thrown through Windows
        KillerShowOutOfMemory(inWindow);
    } catch (const NvErrorCode& error) {
        window->ShowMessage(MizerErrorWords(error), Icon::km_Stop);
    } catch (const std::exception& exception) {
        window->ShowMessage(MizerErrorWords(exception), Icon::km_Stop);
    }
    return 0;
}

LRESULT KAppWindow::OnMessage(UINT inMessage, WPARAM inWParam, LPARAM inLParam) {
    switch (inMessage) {
    case WM_COMMAND:
        OnCommand(LOWORD(inWParam));
        return 0;
    case WM_NOTIFY:
        return OnNotify(reinterpret_cast<NMHDR*>(inLParam));
    case WM_DROPFILES:
        ProcessNames(KAppTakeDropped(reinterpret_cast<HDROP>(inWParam)));
        return 0;
    case WM_SIZE:
        if (mStatus)
            LayOut();
        return 0;
    case WM_DPICHANGED: {
        SetScale(HIWORD(inWParam)); // first: the least size is that of the new screen
        const RECT& rect = *reinterpret_cast<const RECT*>(inLParam);
        SetWindowPos(mWindow, nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
        return 0;
    }
    case WM_GETMINMAXINFO:
        reinterpret_cast<MINMAXINFO*>(inLParam)->ptMinTrackSize = GetLeastSize();
        return 0;
    case WM_CLOSE:
        OnClose();
        return 0;
    case WM_ENDSESSION: // the process ends when this returns
        if (inWParam && mBrain) {
            KAppStorePlacement(mWindow);
            mBrain->StoreTotals();
        }
        return 0;
    case WM_DESTROY:
        KAppStorePlacement(mWindow);
        mWindow = nullptr;
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(mWindow, inMessage, inWParam, inLParam);
    }
}
