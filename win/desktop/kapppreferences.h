#pragma once

#include "win/batch/mizerpreferences.h"
#include "win/desktop/kappdialog.h"

/** The Preferences dialog. */
class KAppPreferences : public KAppDialog {
public:
    explicit KAppPreferences(const MizerSettings& inSettings) : mSettings(inSettings) {}

    /** @return whether OK was clicked: then GetSettings() is what was chosen */
    bool Run(HWND inOwner);

    const MizerSettings& GetSettings() const { return mSettings; }

protected:
    void OnInit() override;
    void OnClick(int inControl) override;

private:
    void ReadControls();
    void EnableControls();

    MizerSettings mSettings;
};
