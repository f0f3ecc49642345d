#pragma once

#include "cachewindow/CacheBrowser.h"
#include "runtime/System.h"

namespace kestrelguard {

/// Single entries of WinINet's cache.
class WinInetEntries final : public CacheEntryDeletion, public CacheEntryDetails {
 public:
    /// `locale` outlives this object.
    explicit WinInetEntries(const Locale& locale) : m_locale(locale) {}

    std::uint32_t DeleteUrlCacheEntryA(const std::wstring& address) override;
    std::wstring SystemMessage(std::uint32_t error) const override;
    /// An entry that is not there has an empty name, no times and no hits.
    std::wstring CacheEntryDetailsOf(const std::wstring& address) override;

 private:
    const Locale& m_locale;
};

}  // namespace kestrelguard
