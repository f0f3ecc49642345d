#include "app/SettingsPages.h"

#include "runtime/Numbers.h"

namespace kestrelguard {

void SettingsPages::KGTabs_Click() {
    const int selected = m_parts.frames.SelectedTab();
    if (selected == 1) {
        const std::wstring separator = m_parts.locale.ThousandsSeparator();
        m_parts.popsToday.SetCaption(Grouped(m_parts.popups.popupsStoppedToday, separator));
        m_parts.popStopsT.SetCaption(Grouped(m_parts.popups.popupsStoppedTotal, separator));
    }
    if (selected >= 1 && selected <= 5) {
        m_parts.frames.ShowFrame(selected - 1, true);
    }
    for (int tab = 1; tab <= m_parts.frames.TabCount(); ++tab) {
        if (tab != selected) {
            m_parts.frames.ShowFrame(tab - 1, false);
        }
    }
}

void SettingsPages::KG_C_Click() {
    m_parts.ApplyCmd.SetEnabled(true);
}

void SettingsPages::cOpenM_Click() {
    m_parts.ApplyCmd.SetEnabled(true);
}

void SettingsPages::ApplyCmd_Click() {
    m_parts.titleBlocking.RebuildTitleKeywords();
    SettingsFile(L"Write");
    m_parts.ApplyCmd.SetEnabled(false);
    m_parts.washer.EnableTimer();
}

void SettingsPages::OKcmd_Click() {
    if (m_parts.ApplyCmd.Enabled()) {
        ApplyCmd_Click();
    }
    m_parts.window.SetState(WindowState::Minimised);
}

void SettingsPages::Cancelcmd_Click() {
    if (m_parts.ApplyCmd.Enabled()) {
        m_parts.ApplyCmd.SetEnabled(false);
        SettingsFile(L"Read");
    }
    m_parts.window.SetState(WindowState::Minimised);
}

}  // namespace kestrelguard
