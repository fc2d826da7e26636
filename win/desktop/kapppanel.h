#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "win/batch/mizershell.h"
#include "win/desktop/kappdialog.h"

/** The progress panel: shows texts and keeps no numbers. */
class KAppPanel : public KAppDialog {
public:
    void SetText(MizerControl inControl, const char* inText);
    void EnableButtons(bool inEnable);

    /** Lays it out for a screen of inDPI dots per inch; when made, it fits the screen it was made on. */
    void SetScale(UINT inDPI);

    /** Size as laid out for the screen it is on. */
    SIZE GetSize() const;

    std::function<void()> mOnPause, mOnCancel;

protected:
    void OnInit() override;
    void OnClick(int inControl) override;

private:
    struct Place {
        HWND mControl;
        RECT mRect; // in the panel
    };

    // As made from the resource.
    UINT mMadeFor = 96; // dots per inch
    SIZE mMadeSize{};
    std::vector<Place> mMadePlaces;
    LOGFONTW mMadeFont{};

    std::unique_ptr<std::remove_pointer_t<HFONT>, decltype(&DeleteObject)> mFont{nullptr, &DeleteObject};
};
