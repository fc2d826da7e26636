// Parvigif.exe: start-up of the desktop application.

#include <cstdint>
#include <new>
#include <optional>

#include <windows.h>

#include <commctrl.h>
#include <ole2.h>

#include "nvcode2/base/nverrorcode.h"
#include "win/desktop/kappopen.h"
#include "win/desktop/kappwindow.h"
#include "win/desktop/killer.h"

namespace {

void StartUp(std::optional<KAppWindow>& outWindow) {
    try {
        if (FAILED(OleInitialize(nullptr))) // the folder dialog needs it
            KillerFatalError(PvText::km_CannotInitialize);
        INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
        InitCommonControlsEx(&classes);
        outWindow.emplace();
    } catch (const NvErrorCode&) {
        KillerFatalError(PvText::km_CannotInitialize);
    } catch (const std::bad_alloc&) {
        KillerFatalError(PvText::km_CannotInitialize);
    }
}

} // namespace

int WINAPI WinMain(HINSTANCE /*inInstance*/, HINSTANCE /*inPrevious*/, char* /*inCommandLine*/,
                   int inShowCommand) {
    int status = 0;
    {
        std::optional<KAppWindow> window;
        StartUp(window);
        try {
            window->Show(inShowCommand);
            window->ProcessNames(KAppGetArguments());
            status = window->Run();
        } catch (const std::bad_alloc&) {
            KillerShowOutOfMemory(nullptr);
            KillerFatalError(PvText::km_None);
        }
    }
    OleUninitialize();
    return status;
}
