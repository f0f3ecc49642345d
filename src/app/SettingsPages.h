#pragma once

#include <string>

#include "controls/Controls.h"
#include "runtime/System.h"

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

/// What the settings pages ask of the rooms that own the settings.
class SettingsActions {
 public:
    virtual ~SettingsActions() = default;
    virtual std::int32_t PopupsStoppedToday() const = 0;
    virtual std::int32_t PopupsStoppedTotal() const = 0;
    /// Builds the set of title keywords anew if their text was edited. Throws kDuplicateKey.
    virtual void RebuildTitleKeywords() = 0;
    /// Throws RunTimeError when the file cannot be read or written.
    virtual void SettingsFile(const wchar_t* mode) = 0;
    /// Sets the wash timer going or stops it, as the settings now say.
    virtual void SetWasher() = 0;
    virtual void Minimise() = 0;
};

/// The OK / Cancel / Apply pattern of the settings pages. Apply enabled means: the controls hold changes
/// that are not stored yet.
class SettingsPages {
 public:
    /// All of it outlives the pages.
    struct Parts {
        PageFrames& frames;
        Switch& ApplyCmd;
        Caption& popsToday;
        Caption& popStopsT;
        const Locale& locale;
        SettingsActions& actions;
    };

    explicit SettingsPages(const Parts& parts) : m_parts(parts) {}

    void KGTabs_Click();
    void KG_C_Click(int index);
    void cOpenM_Click();
    /// Throws what storing throws; Apply then stays enabled.
    void ApplyCmd_Click();
    /// Applies if there is anything to apply, then minimises.
    void OKcmd_Click();
    /// Throws the changes away by reading the file again, then minimises.
    void Cancelcmd_Click();

 private:
    Parts m_parts;
};

}  // namespace kestrelguard
