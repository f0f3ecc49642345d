#include "app/win32/CacheWindowHost.h"

namespace kestrelguard {

void CacheWindowHost::ShowCacheWindow() {
    if (!m_form) {
        m_form = CacheForm::Create({.icons = m_parts.icons,
                                    .caption = kCacheWindowCaption,
                                    .listing = *this,
                                    .cache = *this,
                                    .messages = m_parts.messages,
                                    .savedCookies = m_parts.savedCookies,
                                    .savedCookiesFile = m_parts.savedCookiesFile,
                                    .ShowCookiesOnly = m_parts.ShowCookiesOnly,
                                    .showError = m_parts.showError,
                                    .unloaded = [this] { Forget(); }});
        m_window.emplace(CacheWindow{.entries = m_form->Entries(),
                                     .selection = m_form->Entries(),
                                     .visibility = m_form->EntriesVisibility(),
                                     .countLabel = m_form->CountLabel(),
                                     .detailsLabel = m_form->DetailsLabel(),
                                     .details = m_entries});
        m_parts.windows.SetOwn(&*m_window);
        const auto form = m_form;
        try {
            form->Form_Load();
        } catch (...) {
            // Its list of saved cookies is not the saved cookies: nothing may be written from it.
            form->Discard();
            throw;
        }
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
