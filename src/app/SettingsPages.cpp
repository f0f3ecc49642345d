#include "app/SettingsPages.h"

#include "runtime/Numbers.h"

namespace kestrelguard {

void SettingsPages::KGTabs_Click() {
    const int selected = m_parts.frames.SelectedTab();
    if (selected == 1) {
        const std::wstring separator = m_parts.locale.ThousandsSeparator();
        m_parts.popsToday.SetCaption(Grouped(m_parts.actions.PopupsStoppedToday(), separator));
        m_parts.popStopsT.SetCaption(Grouped(m_parts.actions.PopupsStoppedTotal(), separator));
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

void SettingsPages::KG_C_Click(int /*index*/) {
    m_parts.ApplyCmd.SetEnabled(true);
}

void SettingsPages::cOpenM_Click() {
    m_parts.ApplyCmd.SetEnabled(true);
}

void SettingsPages::ApplyCmd_Click() {
    m_parts.actions.RebuildTitleKeywords();
    m_parts.actions.SettingsFile(L"Write");
    m_parts.ApplyCmd.SetEnabled(false);
    m_parts.actions.SetWasher();
}

void SettingsPages::OKcmd_Click() {
    if (m_parts.ApplyCmd.Enabled()) {
        ApplyCmd_Click();
    }
    m_parts.actions.Minimise();
}

void SettingsPages::Cancelcmd_Click() {
    if (m_parts.ApplyCmd.Enabled()) {
        m_parts.ApplyCmd.SetEnabled(false);
        m_parts.actions.SettingsFile(L"Read");
    }
    m_parts.actions.Minimise();
}

}  // namespace kestrelguard
