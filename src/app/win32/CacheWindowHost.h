#pragma once

#include <memory>
#include <optional>

#include "cachewindow/SavedCookies.h"
#include "cachewindow/win32/CacheForm.h"
#include "privacy/Washer.h"
#include "privacy/win32/WinInetCache.h"
#include "privacy/win32/WinInetEntries.h"

namespace kestrelguard {

/// The one cache window: makes it when it is asked for and ties it to the cache walk.
class CacheWindowHost final : public CacheWindowOpener, CacheListing, CacheEntries {
 public:
    /// All of it outlives the host.
    struct Parts {
        WindowIcons icons;
        CacheWalk& cache;
        DesktopCacheWindows& windows;
        const Locale& locale;
        MessageLoop& messages;
        TextSet& savedCookies;
        SavedCookiesStore& savedCookiesFile;
        bool& ShowCookiesOnly;
        std::function<void(HWND, const RunTimeError&)> showError;
    };

    explicit CacheWindowHost(const Parts& parts) : m_parts(parts), m_entries(parts.locale) {}

    void ShowCacheWindow() override;
    /// Closes the window if there is one. Throws what writing the saved cookies throws.
    void Unload();

 private:
    void LoadCacheEntries(bool clearFiles, bool clearCookies, bool cookiesOnly) override;
    std::wstring CacheEntryDetails(const std::string& address) override {
        return m_entries.CacheEntryDetails(address);
    }
    std::uint32_t DeleteUrlCacheEntryA(const std::string& address) override {
        return m_entries.DeleteUrlCacheEntryA(address);
    }
    std::wstring SystemMessage(std::uint32_t error) const override { return m_entries.SystemMessage(error); }
    void Forget();

    Parts m_parts;
    WinInetEntries m_entries;
    std::shared_ptr<CacheForm> m_form;
    std::optional<CacheWindow> m_window;
};

}  // namespace kestrelguard
