#pragma once

#include <string>

#include "app/TrayIcon.h"
#include "blocking/TitleBlocking.h"
#include "controls/Controls.h"
#include "popup/PopupState.h"
#include "privacy/Washer.h"
#include "runtime/System.h"
#include "settings/SettingsStore.h"

namespace kestrelguard {

/// The tab strip `KGTabs` and the frames `KG_F` of the main window.
class PageFrames {
 public:
    virtual ~PageFrames() = default;
    /// The selected tab, counted from 1; 0 when none is.
    virtual int SelectedTab() const = 0;
    virtual int TabCount() const = 0;
    /// Frames count from 0. A frame that is not there is passed over.
    virtual void ShowFrame(int frame, bool show) = 0;
};

/// The OK / Cancel / Apply pattern of the settings pages. Apply enabled means: the controls hold changes
/// that are not stored yet.
class SettingsPages {
 public:
    /// All of it outlives the pages.
    struct Parts {
        PageFrames& frames;
        TrayWindow& window;
        Switch& ApplyCmd;
        Caption& popsToday;
        Caption& popStopsT;
        const Locale& locale;
        const PopupState& popups;
        TitleBlocking& titleBlocking;
        SettingsStore& settings;
        Washer& washer;
    };

    explicit SettingsPages(const Parts& parts) : m_parts(parts) {}

    void KGTabs_Click();
    /// Any of the six boxes.
    void KG_C_Click();
    void cOpenM_Click();
    /// Throws what storing throws; Apply then stays enabled.
    void ApplyCmd_Click();
    /// Applies if there is anything to apply, then minimises.
    void OKcmd_Click();
    /// Throws the changes away by reading the file again, then minimises.
    void Cancelcmd_Click();

 private:
    void SettingsFile(std::wstring mode) { m_parts.settings.SettingsFile(mode); }

    Parts m_parts;
};

}  // namespace kestrelguard
