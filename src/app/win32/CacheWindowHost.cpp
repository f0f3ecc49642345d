#include "app/win32/CacheWindowHost.h"

namespace kestrelguard {

void CacheWindowHost::ShowCacheWindow() {
    if (!m_form) {
        m_form = CacheForm::Create({m_parts.icon, kCacheWindowCaption, *this, *this, m_parts.messages,
                                    m_parts.savedCookies, m_parts.savedCookiesFile, m_parts.ShowCookiesOnly,
                                    m_parts.showError, [this] { Forget(); }});
        m_window.emplace(CacheWindow{m_form->Entries(), m_form->Entries(), m_form->EntriesVisibility(),
                                     m_form->CountLabel(), m_form->DetailsLabel(), m_entries});
        m_parts.windows.SetOwn(&*m_window);
        const auto form = m_form;
        form->Form_Load();
    }
    if (m_form) {
        m_form->Show();
    }
}

void CacheWindowHost::Unload() {
    if (const auto form = m_form) {
        form->Unload();
    }
}

void CacheWindowHost::LoadCacheEntries(bool clearFiles, bool clearCookies, bool cookiesOnly) {
    bool showList = true;
    m_parts.cache.LoadCacheEntries(showList, clearFiles, clearCookies, cookiesOnly);
}

void CacheWindowHost::Forget() {
    m_parts.windows.SetOwn(nullptr);
    m_window.reset();
    m_form.reset();
}

}  // namespace kestrelguard
