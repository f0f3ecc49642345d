#include "app/win32/Kestrelguard.h"

#include <commctrl.h>
#include <shellapi.h>
#include <windowsx.h>

#include "app/Texts.h"
#include "app/win32/Rooms.h"
#include "app/win32/RunTimeErrorBox.h"
#include "runtime/Maker.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

/// Which control's notification goes to which handler.
struct Kestrelguard::Command {
    int id;
    int notification;
    void (Kestrelguard::*handler)(int index);
    int index = 0;
};

namespace {

/// What a menu item sends in place of a notification.
constexpr int kMenuItem = 0;
static_assert(kMenuItem == BN_CLICKED);

/// Posted to the form by itself: a click or double click on the tree, told after the selection has changed.
constexpr UINT kTreeClickMessage = WM_APP + 2;
constexpr UINT kTreeDoubleClickMessage = WM_APP + 3;

/// The tree's right mouse button.
constexpr int kRightButton = 2;

POINT MousePosition() {
    POINT at = {};
    GetCursorPos(&at);
    return at;
}

}  // namespace

const Kestrelguard::Command Kestrelguard::kCommands[] = {
    {kPTO0, BN_CLICKED, &Kestrelguard::PTO_Click, 0},
    {kPTO1, BN_CLICKED, &Kestrelguard::PTO_Click, 1},
    {kPTO2, BN_CLICKED, &Kestrelguard::PTO_Click, 2},
    {kCOpenM, BN_CLICKED, &Kestrelguard::cOpenM_Click},
    {kKG_C0, BN_CLICKED, &Kestrelguard::KG_C_Click, 0},
    {kKG_C1, BN_CLICKED, &Kestrelguard::KG_C_Click, 1},
    {kKG_C2, BN_CLICKED, &Kestrelguard::KG_C_Click, 2},
    {kKG_C3, BN_CLICKED, &Kestrelguard::KG_C_Click, 3},
    {kKG_C4, BN_CLICKED, &Kestrelguard::KG_C_Click, 4},
    {kKG_C5, BN_CLICKED, &Kestrelguard::KG_C_Click, 5},
    {kAddSite, BN_CLICKED, &Kestrelguard::AddSite_Click},
    {kRemoveSite, BN_CLICKED, &Kestrelguard::RemoveSite_Click},
    {kTitleBan, EN_CHANGE, &Kestrelguard::TitleBan_Change},
    {kClearIEC, BN_CLICKED, &Kestrelguard::ClearIEC_Click},
    {kClearIEH, BN_CLICKED, &Kestrelguard::ClearIEH_Click},
    {kClearIECookies, BN_CLICKED, &Kestrelguard::ClearIECookies_Click},
    {kShowIEC, BN_CLICKED, &Kestrelguard::ShowIEC_Click},
    {kShowIECookies, BN_CLICKED, &Kestrelguard::ShowIECookies_Click},
    {kWash_F, EN_CHANGE, &Kestrelguard::wash_F_Change},
    {kWash_CMB, CBN_SELCHANGE, &Kestrelguard::wash_CMB_Click},
    {kQuestB, BN_CLICKED, &Kestrelguard::questB_Click},
    {kOKcmd, BN_CLICKED, &Kestrelguard::OKcmd_Click},
    {kCancelcmd, BN_CLICKED, &Kestrelguard::Cancelcmd_Click},
    {kApplyCmd, BN_CLICKED, &Kestrelguard::ApplyCmd_Click},
    {kMnuHelp, kMenuItem, &Kestrelguard::mnuHelp_Click},
    {kMnuPOP, kMenuItem, &Kestrelguard::mnuPOP_Click},
    {kMnuIEC, kMenuItem, &Kestrelguard::ClearIEC_Click},
    {kMnuIECook, kMenuItem, &Kestrelguard::ClearIECookies_Click},
    {kMnuShow, kMenuItem, &Kestrelguard::mnuShow_Click},
    {kMnuExit, kMenuItem, &Kestrelguard::mnuExit_Click},
    {kMnuSB, kMenuItem, &Kestrelguard::mnuSB_Click},
    {kMnuCB, kMenuItem, &Kestrelguard::mnuCB_Click},
};

Kestrelguard::Kestrelguard()
    : m_form(*this),
      m_rooms(std::make_unique<Rooms>(m_form, static_cast<TrayWindow&>(*this), static_cast<TrayPopup&>(*this),
                                      m_browserPopup)),
      m_pages(std::make_unique<SettingsPages>(
          SettingsPages::Parts{*this, m_rooms->controls.ApplyCmd, m_rooms->controls.popsToday,
                               m_rooms->controls.popStopsT, m_rooms->locale, *this})),
      m_taskbarCreated(RegisterWindowMessageA("TaskbarCreated")) {}

Kestrelguard::~Kestrelguard() = default;

void Kestrelguard::Form_Load() {
    SettingsFile(L"Read");
    m_rooms->savedCookiesFile.SavedCookiesFile(L"Read");
    m_rooms->tray.Fill(m_form.Handle(), m_form.FormIcon());
    m_rooms->trayIcon.FillTip();
    m_rooms->messages.DoEvents();
    m_rooms->updateCheck.WinVersion(PlatformVersion());
    m_loaded = true;
    m_rooms->browserTree.RefreshBrowserTree();
    SetWasher();
    m_rooms->controls.ApplyCmd.SetEnabled(false);
    // The strip tells of no click on the tab that is selected already.
    m_pages->KGTabs_Click();
}

void Kestrelguard::FirstShow() {
    ShowWindow(m_form.Handle(), m_rooms->controls.cOpenM.Ticked() ? SW_SHOWMINNOACTIVE : SW_SHOWNORMAL);
}

void Kestrelguard::Form_Unload() {
    if (m_unloaded) {
        return;
    }
    m_unloaded = true;
    // A step that fails must not keep the others from being done; the first failure is told.
    std::optional<RunTimeError> failure;
    const auto step = [&failure](auto&& action) {
        try {
            action();
        } catch (const RunTimeError& error) {
            if (!failure) {
                failure = error;
            }
        }
    };
    step([this] { m_rooms->washer.Stop(); });
    step([this] { m_rooms->IEEvents1.SetEnabled(false); });
    step([this] { m_rooms->cacheWindow.Unload(); });
    step([this] { m_rooms->trayIcon.Delete(); });
    step([this] { SettingsFile(L"Write"); });
    step([this] { m_rooms->messages.DoEvents(); });
    if (failure) {
        throw *failure;
    }
}

// --- messages ---------------------------------------------------------------------------------------------

std::optional<LRESULT> Kestrelguard::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (!m_loaded) {
        return std::nullopt;  // windows under construction tell nothing that a handler wants to hear
    }
    if (message == m_taskbarCreated) {
        m_rooms->trayIcon.TaskbarCreated();
        return 0;
    }
    switch (message) {
        case WM_COMMAND:
            OnCommand(LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_NOTIFY:
            return OnNotify(*reinterpret_cast<const NMHDR*>(lParam));
        case kTreeClickMessage:
            m_rooms->browserTree.tvBrowsers_Click();
            return 0;
        case kTreeDoubleClickMessage:
            m_rooms->browserTree.tvBrowsers_DblClick();
            return 0;
        case kTreeMenuMessage:
            m_browserPopup.at = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
            m_rooms->browserTree.tvBrowsers_MouseDown(kRightButton);
            return 0;
        case WM_SIZE:
            m_rooms->trayIcon.Form_Resize();
            return 0;
        case PlatformTray::kCallback:
            m_rooms->trayIcon.Form_MouseMove(static_cast<double>(GET_X_LPARAM(lParam)));
            return 0;
        case WM_TIMER:
            // A tick that was waiting when the timer was switched off is none.
            if (wParam == m_rooms->controls.WasherTimer.Id() && m_rooms->controls.WasherTimer.Enabled()) {
                m_rooms->washer.Washer_Timer();
            }
            return 0;
        case WM_CLOSE:
            if (InSendMessage()) {
                // The browsers cannot be called while another program's message is being handled.
                PostMessageA(m_form.Handle(), WM_CLOSE, 0, 0);
            } else {
                Unload();
            }
            return 0;
        case WM_ENDSESSION:
            if (wParam != FALSE) {
                Form_Unload();
            }
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            return std::nullopt;
    }
}

void Kestrelguard::OnError(const RunTimeError& error) {
    ShowRunTimeError(m_form.Destroyed() ? nullptr : m_form.Handle(), error);
}

void Kestrelguard::OnCommand(int id, int notification) {
    for (const Command& command : kCommands) {
        if (command.id == id && command.notification == notification) {
            (this->*command.handler)(command.index);
            return;
        }
    }
}

std::optional<LRESULT> Kestrelguard::OnNotify(const NMHDR& notification) {
    if (notification.idFrom == kKGTabs && notification.code == static_cast<UINT>(TCN_SELCHANGE)) {
        m_pages->KGTabs_Click();
        return 0;
    }
    // A click is told before it selects: the handlers act on the selection, so they run a message later.
    if (notification.idFrom == kTvBrowsers && notification.code == static_cast<UINT>(NM_CLICK)) {
        PostMessageA(m_form.Handle(), kTreeClickMessage, 0, 0);
    } else if (notification.idFrom == kTvBrowsers && notification.code == static_cast<UINT>(NM_DBLCLK)) {
        PostMessageA(m_form.Handle(), kTreeDoubleClickMessage, 0, 0);
    }
    return std::nullopt;
}

void Kestrelguard::Unload() {
    try {
        Form_Unload();
    } catch (const RunTimeError& error) {
        // The program ends all the same: a folder that cannot be written must not keep it running.
        OnError(error);
    }
    m_form.Destroy();
}

// --- the window as its icon and its pages see it
// ------------------------------------------------------------

WindowState Kestrelguard::State() const {
    if (IsIconic(m_form.Handle())) {
        return WindowState::Minimised;
    }
    return IsZoomed(m_form.Handle()) ? WindowState::Maximised : WindowState::Normal;
}

void Kestrelguard::SetState(WindowState state) {
    ShowWindow(m_form.Handle(), state == WindowState::Minimised   ? SW_MINIMIZE
                                : state == WindowState::Maximised ? SW_SHOWMAXIMIZED
                                                                  : SW_RESTORE);
}

void Kestrelguard::Hide() {
    ShowWindow(m_form.Handle(), SW_HIDE);
}

void Kestrelguard::Show() {
    ShowWindow(m_form.Handle(), SW_SHOW);
    SetForegroundWindow(m_form.Handle());
}

void Kestrelguard::SetForeground() {
    SetForegroundWindow(m_form.Handle());
}

void Kestrelguard::PopUp() {
    PopUpMenu(m_form.TrayMenu(), MousePosition());
}

void Kestrelguard::PopUpMenu(HMENU menu, POINT at) {
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_LEFTBUTTON, at.x, at.y, 0, m_form.Handle(), nullptr);
    // Without a further message the menu of a hidden window would not close on the second try.
    PostMessageA(m_form.Handle(), WM_NULL, 0, 0);
}

int Kestrelguard::SelectedTab() const {
    return m_form.SelectedTab() + 1;
}

void Kestrelguard::ShowFrame(int frame, bool show) {
    if (frame >= 0 && frame < FormWindow::kPages) {
        m_form.ShowPage(frame, show);
    }
}

// --- what the pages ask of the rooms
// --------------------------------------------------------------------------

std::int32_t Kestrelguard::PopupsStoppedToday() const {
    return m_rooms->popupState.popupsStoppedToday;
}

std::int32_t Kestrelguard::PopupsStoppedTotal() const {
    return m_rooms->lasting.popupsStoppedTotal;
}

void Kestrelguard::RebuildTitleKeywords() {
    m_rooms->titleBlocking.RebuildTitleKeywords();
}

void Kestrelguard::SettingsFile(const wchar_t* mode) {
    std::wstring text = mode;
    m_rooms->settings.SettingsFile(text);
}

void Kestrelguard::SetWasher() {
    m_rooms->washer.EnableTimer();
}

// --- handlers
// -------------------------------------------------------------------------------------------------

void Kestrelguard::PTO_Click(int index) {
    m_rooms->popupPolicy.PTO_Click(index);
}

void Kestrelguard::AddSite_Click(int) {
    m_rooms->siteBlocking.AddSite_Click();
}

void Kestrelguard::RemoveSite_Click(int) {
    m_rooms->siteBlocking.RemoveSite_Click();
}

void Kestrelguard::TitleBan_Change(int) {
    if (!m_rooms->controls.TitleBan.BeingSet()) {
        m_rooms->titleBlocking.TitleBan_Change();
    }
}

void Kestrelguard::ClearIEC_Click(int) {
    m_rooms->washer.ClearIEC_Click();
}

void Kestrelguard::ClearIEH_Click(int) {
    m_rooms->washer.ClearIEH_Click();
}

void Kestrelguard::ClearIECookies_Click(int) {
    m_rooms->washer.ClearIECookies_Click();
}

void Kestrelguard::ShowIEC_Click(int) {
    m_rooms->washer.ShowIEC_Click();
}

void Kestrelguard::ShowIECookies_Click(int) {
    m_rooms->washer.ShowIECookies_Click();
}

void Kestrelguard::wash_F_Change(int) {
    if (!m_rooms->controls.wash_F.BeingSet()) {
        m_rooms->washer.wash_F_Change();
    }
}

void Kestrelguard::wash_CMB_Click(int) {
    m_rooms->washer.wash_CMB_Click();
}

void Kestrelguard::mnuPOP_Click(int) {
    m_rooms->popupPolicy.mnuPOP_Click();
}

void Kestrelguard::mnuShow_Click(int) {
    m_rooms->trayIcon.mnuShow_Click();
}

void Kestrelguard::mnuExit_Click(int) {
    PostMessageA(m_form.Handle(), WM_CLOSE, 0, 0);
}

void Kestrelguard::mnuSB_Click(int) {
    m_rooms->browserTree.mnuSB_Click();
}

void Kestrelguard::mnuCB_Click(int) {
    m_rooms->browserTree.mnuCB_Click();
}

void Kestrelguard::mnuHelp_Click(int) {
    const std::string page = ToAnsi(std::wstring(texts::kHelpScheme) + maker::kWebServer + texts::kHelpPage);
    // Kept: the parameters are the text of a zero.
    m_helpInstance = ShellExecuteA(m_form.Handle(), "open", page.c_str(), "0",
                                   ToAnsi(FolderOfProgram()).c_str(), SW_SHOWNORMAL);
}

}  // namespace kestrelguard
