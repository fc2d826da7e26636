#pragma once

#include <functional>

#include "win/kappdialog.h"
#include "win/mizershell.h"

/** The progress panel: shows what it is told and keeps no numbers. */
class KAppPanel : public KAppDialog {
public:
    void SetText(MizerControl inControl, const char* inText);
    void EnableButtons(bool inEnable);

    /** Size as laid out for the screen it is on. */
    SIZE GetSize() const;

    std::function<void()> mOnPause, mOnCancel;

protected:
    void OnInit() override { EnableButtons(false); }
    void OnClick(int inControl) override;
};
