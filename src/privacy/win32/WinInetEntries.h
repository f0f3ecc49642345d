#pragma once

#include <cstdint>
#include <string>

#include "privacy/CachePlatform.h"
#include "runtime/System.h"

namespace kestrelguard {

/// Single entries of WinINet's cache.
class WinInetEntries final : public CacheDetails {
 public:
    /// `locale` outlives this object.
    explicit WinInetEntries(const Locale& locale) : m_locale(locale) {}

    /// Deletes the entry. Answers 0, or the number of the error.
    std::uint32_t DeleteUrlCacheEntryA(const std::string& address);
    /// The system's text for an error; empty when it has none of fewer than 200 characters.
    std::wstring SystemMessage(std::uint32_t error) const;
    /// An entry that is not there has an empty name, no times and no hits.
    std::wstring CacheEntryDetails(const std::string& address) override;

 private:
    const Locale& m_locale;
};

}  // namespace kestrelguard
