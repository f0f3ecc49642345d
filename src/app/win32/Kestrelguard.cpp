#include "app/win32/Kestrelguard.h"

#include <commctrl.h>
#include <shellapi.h>
#include <windowsx.h>

#include "app/Texts.h"
#include "app/win32/Rooms.h"
#include "app/win32/RunTimeErrorBox.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/Maker.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

/// What a menu item sends in place of a notification.
constexpr int kMenuItem = 0;
static_assert(kMenuItem == BN_CLICKED);

/// Posted to the form by itself: a click or double click on the tree, told after the selection has changed.
constexpr UINT kTreeClickMessage = WM_APP + 2;
constexpr UINT kTreeDoubleClickMessage = WM_APP + 3;
constexpr UINT kWatchAnewMessage = WM_APP + 4;

/// The tree's right mouse button.
constexpr int kRightButton = 2;

}  // namespace

const Command<Kestrelguard> Kestrelguard::kCommands[] = {
    {kPTO0, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->popupPolicy.PTO_Click(0); }},
    {kPTO1, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->popupPolicy.PTO_Click(1); }},
    {kPTO2, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->popupPolicy.PTO_Click(2); }},
    {kCOpenM, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.cOpenM_Click(); }},
    {kKG_C0, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.KG_C_Click(); }},
    {kKG_C1, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.KG_C_Click(); }},
    {kKG_C2, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.KG_C_Click(); }},
    {kKG_C3, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.KG_C_Click(); }},
    {kKG_C4, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.KG_C_Click(); }},
    {kKG_C5, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.KG_C_Click(); }},
    {kAddSite, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->siteBlocking.AddSite_Click(); }},
    {kRemoveSite, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->siteBlocking.RemoveSite_Click(); }},
    // What the program itself puts into a field is no change of the user's.
    {kTitleBan, EN_CHANGE,
     [](Kestrelguard& form) {
         if (!form.m_rooms->controls.TitleBan.BeingSet()) {
             form.m_rooms->titleBlocking.TitleBan_Change();
         }
     }},
    {kWash_F, EN_CHANGE,
     [](Kestrelguard& form) {
         if (!form.m_rooms->controls.wash_F.BeingSet()) {
             form.m_rooms->washer.wash_F_Change();
         }
     }},
    {kWash_CMB, CBN_SELCHANGE, [](Kestrelguard& form) { form.m_rooms->washer.wash_CMB_Click(); }},
    {kClearIEC, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->washer.ClearIEC_Click(); }},
    {kClearIEH, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->washer.ClearIEH_Click(); }},
    {kClearIECookies, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->washer.ClearIECookies_Click(); }},
    {kShowIEC, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->washer.ShowIEC_Click(); }},
    {kShowIECookies, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->washer.ShowIECookies_Click(); }},
    {kQuestB, BN_CLICKED, [](Kestrelguard& form) { form.mnuHelp_Click(); }},
    {kOKcmd, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.OKcmd_Click(); }},
    {kCancelcmd, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.Cancelcmd_Click(); }},
    {kApplyCmd, BN_CLICKED, [](Kestrelguard& form) { form.m_rooms->pages.ApplyCmd_Click(); }},
    {kMnuHelp, kMenuItem, [](Kestrelguard& form) { form.mnuHelp_Click(); }},
    {kMnuPOP, kMenuItem, [](Kestrelguard& form) { form.m_rooms->popupPolicy.mnuPOP_Click(); }},
    {kMnuIEC, kMenuItem, [](Kestrelguard& form) { form.m_rooms->washer.ClearIEC_Click(); }},
    {kMnuIECook, kMenuItem, [](Kestrelguard& form) { form.m_rooms->washer.ClearIECookies_Click(); }},
    {kMnuShow, kMenuItem, [](Kestrelguard& form) { form.m_rooms->trayIcon.mnuShow_Click(); }},
    {kMnuExit, kMenuItem, [](Kestrelguard& form) { PostMessageA(form.Handle(), WM_CLOSE, 0, 0); }},
    {kMnuSB, kMenuItem, [](Kestrelguard& form) { form.m_rooms->browserTree.mnuSB_Click(); }},
    {kMnuCB, kMenuItem, [](Kestrelguard& form) { form.m_rooms->browserTree.mnuCB_Click(); }},
};

Kestrelguard::Kestrelguard()
    : FormWindow(ShowRunTimeError),
      m_life({.start = StartSteps(),
              .show = [this] { FirstShow(); },
              .end = EndSteps(),
              .tell = [this](const RunTimeError& error) { ShowRunTimeError(Handle(), error); },
              .leave = [this] { DestroyForm(); }}),
      m_taskbarCreated(RegisterWindowMessageA("TaskbarCreated")),
      m_rooms(std::make_unique<Rooms>(static_cast<FormWindow&>(*this))) {}

Kestrelguard::~Kestrelguard() = default;

ProgramLife::Steps Kestrelguard::StartSteps() {
    return {
        [this] {
            SettingsFile(L"Read");
            m_settingsRead = true;
        },
        [this] { m_rooms->savedCookiesFile.SavedCookiesFile(L"Read"); },
        [this] { m_rooms->tray.Fill(Handle(), FormIcons().smallIcon); },
        [this] { m_rooms->trayIcon.FillTip(); },
        [this] { m_rooms->messages.DoEvents(); },
        [this] { m_rooms->updateCheck.WinVersion(PlatformVersion()); },
        [this] { m_rooms->browserTree.RefreshBrowserTree(); },
        [this] { m_rooms->washer.EnableTimer(); },
        [this] { m_rooms->controls.ApplyCmd.SetEnabled(false); },
        // The strip tells of no click on the tab that is selected already.
        [this] { m_rooms->pages.KGTabs_Click(); },
    };
}

ProgramLife::Steps Kestrelguard::EndSteps() {
    return {
        [this] { m_rooms->washer.Stop(); },
        [this] { m_rooms->IEEvents1.SetEnabled(false); },
        [this] { m_rooms->cacheWindow.Unload(); },
        [this] { m_rooms->savedCookiesFile.WriteUnwritten(); },
        [this] { m_rooms->trayIcon.Delete(); },
        [this] {
            if (m_settingsRead) {
                SettingsFile(L"Write");
            }
        },
        [this] { m_rooms->messages.DoEvents(); },
    };
}

void Kestrelguard::SettingsFile(const wchar_t* mode) {
    std::wstring text = mode;
    m_rooms->settings.SettingsFile(text);
}

void Kestrelguard::FirstShow() {
    ShowWindow(Handle(), m_rooms->controls.cOpenM.Ticked() ? SW_SHOWMINNOACTIVE : SW_SHOWNORMAL);
}

void Kestrelguard::GoOn() {
    if (m_life.Alive()) {
        ErrorsIgnored([this] { m_rooms->IEEvents1.GoOn(); }, [this] { m_rooms->browserTree.GoOn(); });
        m_life.GoOn();
    }
}

std::optional<LRESULT> Kestrelguard::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CLOSE:
            if (InSendMessage()) {
                // The browsers cannot be called while another program waits for its message: it gets its
                // answer first.
                ReplyMessage(0);
            }
            m_life.Close();
            return 0;
        case WM_ENDSESSION:
            if (wParam != FALSE) {
                m_life.EndSession();
            }
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            break;
    }
    if (m_life.Running()) {
        if (const auto result = OnFormMessage(message, wParam, lParam)) {
            return result;
        }
    }
    return FormWindow::OnMessage(message, wParam, lParam);
}

std::optional<LRESULT> Kestrelguard::OnFormMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == m_taskbarCreated) {
        m_rooms->trayIcon.TaskbarCreated();
        // The list of windows went with the shell. Posted: this message may be a sent one.
        PostMessageA(Handle(), kWatchAnewMessage, 0, 0);
        return 0;
    }
    switch (message) {
        case WM_NOTIFY: {
            // Controls send it; whoever posts one may mean no record at all.
            const auto* const notification = reinterpret_cast<const NMHDR*>(lParam);
            return IsBadReadPtr(notification, sizeof *notification) ? std::nullopt : OnNotify(*notification);
        }
        case kWatchAnewMessage:
            ErrorsIgnored([this] { m_rooms->IEEvents1.Refresh(); },
                          [this] { m_rooms->browserTree.RefreshBrowserTree(); });
            m_rooms->controls.WatchAnewTimer.SetEnabled(!m_rooms->IEEvents1.Enabled());
            return 0;
        case kTreeClickMessage:
            m_rooms->browserTree.tvBrowsers_Click();
            return 0;
        case kTreeDoubleClickMessage:
            m_rooms->browserTree.tvBrowsers_DblClick();
            return 0;
        case kTreeMenuMessage:
            BMnu().at = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
            m_rooms->browserTree.tvBrowsers_MouseDown(kRightButton);
            return 0;
        case WM_SIZE:
            m_rooms->trayIcon.Form_Resize();
            return 0;
        case PlatformTray::kCallback:
            m_rooms->trayIcon.Form_MouseMove(static_cast<double>(GET_X_LPARAM(lParam)));
            return 0;
        case WM_TIMER:
            // A tick that was waiting when its timer was switched off is none.
            if (m_rooms->controls.WasherTimer.Ticks(wParam)) {
                m_rooms->washer.Washer_Timer();
            } else if (m_rooms->controls.WatchAnewTimer.Ticks(wParam)) {
                m_rooms->controls.WatchAnewTimer.SetEnabled(false);
                PostMessageA(Handle(), kWatchAnewMessage, 0, 0);
            }
            return 0;
        default:
            return std::nullopt;
    }
}

void Kestrelguard::OnCommand(int id, int notification) {
    // Windows that are being made, or taken down, tell nothing that a handler wants to hear.
    if (m_life.Running()) {
        RunCommand(kCommands, *this, id, notification);
    }
}

bool Kestrelguard::TurnPage(int step) {
    if (m_life.Running()) {
        const bool inPage = FocusInPage();
        SelectTab((SelectedTab() - 1 + step + TabCount()) % TabCount() + 1);
        m_rooms->pages.KGTabs_Click();
        if (inPage) {
            FocusPage();
        }
    }
    return true;
}

std::optional<LRESULT> Kestrelguard::OnNotify(const NMHDR& notification) {
    // A click on the tab that is shown already changes no selection and counts all the same.
    if (notification.idFrom == kKGTabs && (notification.code == static_cast<UINT>(TCN_SELCHANGE) ||
                                           notification.code == static_cast<UINT>(NM_CLICK))) {
        m_rooms->pages.KGTabs_Click();
        return 0;
    }
    // A click is told before it selects: the handlers act on the selection, so they run a message later.
    if (notification.idFrom == kTvBrowsers && notification.code == static_cast<UINT>(NM_CLICK)) {
        PostMessageA(Handle(), kTreeClickMessage, 0, 0);
    } else if (notification.idFrom == kTvBrowsers && notification.code == static_cast<UINT>(NM_DBLCLK)) {
        PostMessageA(Handle(), kTreeDoubleClickMessage, 0, 0);
    }
    return std::nullopt;
}

void Kestrelguard::mnuHelp_Click() {
    const std::string page = ToAnsi(std::wstring(texts::kHelpScheme) + maker::kWebServer + texts::kHelpPage);
    // Kept: the parameters are the text of a zero.
    m_helpInstance =
        ShellExecuteA(Handle(), "open", page.c_str(), "0", ToAnsi(FolderOfProgram()).c_str(), SW_SHOWNORMAL);
}

}  // namespace kestrelguard
