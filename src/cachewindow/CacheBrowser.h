#pragma once

#include <cstdint>
#include <string>

#include "controls/Controls.h"
#include "controls/Lists.h"
#include "controls/MessageBoxes.h"
#include "controls/MessageLoop.h"

namespace kestrelguard {

/// The one walk that fills, refreshes and clears, as far as the cache window asks for it.
class CacheListing {
 public:
    virtual ~CacheListing() = default;
    /// A walk that fills the open cache window's list. Throws kOverflow.
    virtual void LoadCacheEntries(bool clearFiles, bool clearCookies, bool cookiesOnly) = 0;
};

/// Single entries of the cache, by the bytes of their addresses.
class CacheEntries {
 public:
    virtual ~CacheEntries() = default;
    /// The details: three lines of text for an address.
    virtual std::wstring CacheEntryDetails(const std::string& address) = 0;
    /// Deletes the entry. Answers 0, or the number of the error.
    virtual std::uint32_t DeleteUrlCacheEntryA(const std::string& address) = 0;
    /// The system's text for an error; empty when it has none of fewer than 200 characters.
    virtual std::wstring SystemMessage(std::uint32_t error) const = 0;
};

/// What the cache window does with its entries: lists, finds, deletes and clears them.
class CacheBrowser {
 public:
    /// All of it belongs to the window and outlives this object.
    struct Parts {
        /// `kg_CLST`: the addresses.
        AddressRows& entries;
        ListSelection& selection;
        /// `fndTXT` and `fndCache`.
        const TextBox& fndTXT;
        Caption& fndCache;
        ToolTip& fndCacheTip;
        Caption& IECacheLBL;
        Caption& CacheDetail;
        CacheListing& listing;
        CacheEntries& cache;
        MessageBoxes& boxes;
        MessageLoop& messages;
        /// Program-wide: cookies only.
        bool& ShowCookiesOnly;
    };

    explicit CacheBrowser(const Parts& parts) : m_parts(parts) {}

    void AllCache_Click();
    void ShowCook_Click();
    void RefreshIE_Click();
    void ClearIENow_Click();
    void kg_CLST_Click();
    void kg_CLST_DblClick();
    void fndTXT_Change();
    void fndCache_Click();

 private:
    std::string SelectedAddress() const;
    void RemoveRow(std::int32_t row, const std::string& address);
    bool FindFrom(std::int32_t row, const std::wstring& text);

    Parts m_parts;
    /// The text searched for last, and the row after the last match; 0: no search is under way.
    std::wstring m_lastFind;
    std::int32_t m_findPos = 0;
};

}  // namespace kestrelguard
