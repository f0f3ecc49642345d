#include "app/TrayIcon.h"

#include <optional>

#include "app/Texts.h"
#include "runtime/Numbers.h"

namespace kestrelguard {

namespace {

// The tray messages that do something.
constexpr std::int32_t kLeftButtonUp = 514;
constexpr std::int32_t kLeftDoubleClick = 515;
constexpr std::int32_t kRightButtonUp = 517;

std::int32_t TrayMessage(double x, const MouseScale& scale) {
    return RoundToInteger(scale.pixels ? x : x / scale.twipsPerPixelX);
}

}  // namespace

void TrayIcon::FillTip() {
    const std::optional<PopupMode> mode = m_parts.state.Mode();
    if (!mode) {
        return;
    }
    WriteTip(TipText(*mode, m_parts.state.popupsStoppedToday));
    if (*mode == PopupMode::Allow) {
        m_parts.mnuPOP.SetChecked(false);
    }
}

void TrayIcon::UpdateSZTIP() {
    if (m_parts.window.State() != WindowState::Minimised) {
        return;
    }
    // Kept: an unchanged buffer ends it, even where the mode has been changed on the settings page.
    if (m_trayTipText == m_lastTip) {
        return;
    }
    const std::optional<PopupMode> mode = m_parts.state.Mode();
    // In Prevent mode the policy itself keeps the buffer up to date.
    if (mode == PopupMode::Prompt || mode == PopupMode::Allow) {
        WriteTip(TipText(*mode, m_parts.state.popupsStoppedToday));
    }
    m_parts.shell.Modify(m_trayTipText);
    m_lastTip = m_trayTipText;
}

void TrayIcon::Form_Resize() {
    if (m_parts.window.State() == WindowState::Minimised) {
        m_parts.window.Hide();
        m_parts.shell.Add(m_trayTipText);
    } else {
        m_parts.shell.Delete();
    }
}

void TrayIcon::Form_MouseMove(double x) {
    if (m_parts.window.State() == WindowState::Minimised) {
        UpdateSZTIP();
    }
    if (m_parts.window.State() == WindowState::Normal) {
        return;
    }
    switch (TrayMessage(x, m_parts.window.Scale())) {
        case kLeftButtonUp:
        case kLeftDoubleClick:
            mnuShow_Click();
            break;
        case kRightButtonUp:
            OpenMenu();
            break;
        default:
            break;
    }
}

void TrayIcon::OpenMenu() {
    m_parts.window.SetForeground();
    m_parts.mnuPOPCaption.SetCaption(texts::kMnuPOPBeforeCount + Decimal(m_parts.state.popupsStoppedToday));
    // The mode may have been changed on the settings page since the menu was last open.
    m_parts.mnuPOP.SetChecked(m_parts.state.prevent.Selected());
    m_parts.mnuM.PopUp();
}

void TrayIcon::mnuShow_Click() {
    m_parts.window.SetState(WindowState::Normal);
    m_parts.window.Show();
}

void TrayIcon::TaskbarCreated() {
    if (m_parts.window.State() == WindowState::Minimised) {
        m_parts.shell.Add(m_trayTipText);
    }
}

}  // namespace kestrelguard
