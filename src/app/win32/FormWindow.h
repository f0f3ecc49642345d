#pragma once

#include <windows.h>

#include <commctrl.h>

#include <array>
#include <vector>

#include "app/SettingsPages.h"
#include "app/TrayIcon.h"
#include "app/win32/ControlIds.h"
#include "app/win32/FormLayout.h"
#include "app/win32/FormMenus.h"
#include "app/win32/PageWindow.h"
#include "controls/win32/FormBase.h"
#include "controls/win32/SubclassedControl.h"
#include "controls/win32/ToolTips.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

using ImageList = Owner<NullTraits<HIMAGELIST, ImageList_Destroy>>;

/// Sent by the tree to the form when the right button goes down over it or its menu key is pressed:
/// the low word of lParam is x, the high word y, on the screen.
inline constexpr UINT kTreeMenuMessage = WM_APP + 1;

/// The tree's mouse and menu key, taken before the tree sees them.
class TreeMenuKeys final : public SubclassedControl {
 public:
    void Attach(HWND tree, HWND form, int margin);

 private:
    std::optional<LRESULT> OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept override;
    POINT BelowSelectedNode() const noexcept;
    void Tell(POINT inTree) const noexcept;

    HWND m_form = nullptr;
    int m_margin = 0;
};

/// The windows of the form Kestrelguard: the main window, its three pages, all controls and both menus, laid
/// out and with their default texts, hidden. Decides nothing.
class FormWindow : public FormBase, public TrayWindow, public PageFrames {
 public:
    HWND Control(ControlId id) const { return m_controls[static_cast<std::size_t>(id)]; }
    HMENU TrayMenuHandle() const { return m_trayMenu->Handle(); }
    WindowIcons FormIcons() const { return {m_bigIcon.Get(), m_smallIcon.Get()}; }
    TrayPopup& MnuM() { return *m_trayMenu; }
    TreeMenu& BMnu() { return *m_treeMenu; }

    /// `KG_IMGL`: 1 a detail, 2 the root, 3 a browser window.
    ImageList LoadTreeImages() const;

    /// Selects a tab, counted from 1, as a click on it does, but without telling.
    void SelectTab(int tab);
    /// Whether a control of the page that is shown has the focus.
    bool FocusInPage() const;
    /// Gives it to the first one.
    void FocusPage();

    // TrayWindow
    WindowState State() const override;
    void SetState(WindowState state) override;
    void Hide() override;
    void Show() override;
    void SetForeground() override;

    // PageFrames
    int SelectedTab() const override;
    int TabCount() const override { return form_layout::kPages; }
    void ShowFrame(int frame, bool show) override;

 protected:
    /// Creates every window. Throws RunTimeError when the system refuses one.
    explicit FormWindow(ErrorReport report);
    ~FormWindow() override = default;

    int DefaultButton(HWND focus) const override;
    HWND FirstFocus() const override;

 private:
    void CreateMainWindow();
    void CreateControls();
    void CreateOne(const form_layout::ControlRow& row);
    void LoadPictures();
    void FillTabs();
    void FillLists();

    std::array<HWND, 200> m_controls = {};
    kestrelguard::Icon m_bigIcon;
    kestrelguard::Icon m_smallIcon;
    Font m_font;
    Font m_boldFont;
    std::array<PageWindow, form_layout::kPages> m_pages;
    std::optional<TrayMenu> m_trayMenu;
    std::optional<TreeMenu> m_treeMenu;
    std::vector<kestrelguard::Icon> m_pictures;
    ToolTips m_tips;
    TreeMenuKeys m_treeKeys;
};

}  // namespace kestrelguard
