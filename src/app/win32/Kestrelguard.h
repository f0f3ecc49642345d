#pragma once

#include <windows.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/SettingsPages.h"
#include "app/TrayIcon.h"
#include "app/win32/FormWindow.h"
#include "app/win32/PlatformTray.h"
#include "browsertree/BrowserTree.h"
#include "runtime/KeyedCollection.h"
#include "runtime/LastingValues.h"

namespace kestrelguard {

struct Rooms;

/// The form Kestrelguard: the windows, the subsystems behind them and how they are tied together.
class Kestrelguard final : FormMessages, TrayWindow, TrayPopup, PageFrames, SettingsActions {
 public:
    /// Creates every window and room; nothing is read, shown or watched yet.
    Kestrelguard();
    ~Kestrelguard() override;

    /// The start of the program, in its order. What it throws ends the program.
    void Form_Load();

    /// Shows the window as the settings want it: in the tray, or on the screen.
    void FirstShow();

 private:
    // FormMessages
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnError(const RunTimeError& error) override;

    // TrayWindow, TrayPopup
    WindowState State() const override;
    void SetState(WindowState state) override;
    void Hide() override;
    void Show() override;
    void SetForeground() override;
    void PopUp() override;

    // PageFrames
    int SelectedTab() const override;
    int TabCount() const override { return FormWindow::kPages; }
    void ShowFrame(int frame, bool show) override;

    // SettingsActions
    std::int32_t PopupsStoppedToday() const override;
    std::int32_t PopupsStoppedTotal() const override;
    void RebuildTitleKeywords() override;
    void SettingsFile(const wchar_t* mode) override;
    void SetWasher() override;
    void Minimise() override { SetState(WindowState::Minimised); }

    // The handlers of controls. `index` is that of a control array.
    struct Command;
    static const Command kCommands[];
    void OnCommand(int id, int notification);
    std::optional<LRESULT> OnNotify(const NMHDR& notification);

    void PTO_Click(int index);
    void KG_C_Click(int index) { m_pages->KG_C_Click(index); }
    void cOpenM_Click(int) { m_pages->cOpenM_Click(); }
    void ApplyCmd_Click(int) { m_pages->ApplyCmd_Click(); }
    void OKcmd_Click(int) { m_pages->OKcmd_Click(); }
    void Cancelcmd_Click(int) { m_pages->Cancelcmd_Click(); }
    void questB_Click(int index) { mnuHelp_Click(index); }
    void mnuHelp_Click(int);
    void AddSite_Click(int);
    void RemoveSite_Click(int);
    void TitleBan_Change(int);
    void ClearIEC_Click(int);
    void ClearIEH_Click(int);
    void ClearIECookies_Click(int);
    void ShowIEC_Click(int);
    void ShowIECookies_Click(int);
    void wash_F_Change(int);
    void wash_CMB_Click(int);
    void mnuPOP_Click(int);
    void mnuShow_Click(int);
    void mnuExit_Click(int);
    void mnuSB_Click(int);
    void mnuCB_Click(int);

    /// The end of the program, in its order; the second call does nothing. Throws when the settings cannot
    /// be written.
    void Form_Unload();
    /// Form_Unload, then the end of the window whatever happens.
    void Unload();
    void PopUpMenu(HMENU menu, POINT at);

    /// The menu of the tree, opened where the mouse went down or at the selected node.
    class BrowserPopup final : public BrowserMenu {
     public:
        explicit BrowserPopup(Kestrelguard& form) : m_form(form) {}
        void PopUp() override { m_form.PopUpMenu(m_form.m_form.BrowserMenu(), at); }
        POINT at = {};

     private:
        Kestrelguard& m_form;
    };

    FormWindow m_form;
    BrowserPopup m_browserPopup{*this};
    std::unique_ptr<Rooms> m_rooms;
    std::unique_ptr<SettingsPages> m_pages;
    UINT m_taskbarCreated = 0;
    HINSTANCE m_helpInstance = nullptr;
    bool m_loaded = false;
    bool m_unloaded = false;
};

}  // namespace kestrelguard
