#include "cachewindow/CacheBrowser.h"

#include "cachewindow/Texts.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr std::uint32_t kQuestion = box_style::kYesNo | box_style::kInformation;

constexpr std::size_t kAskedAddress = 50;

}  // namespace

void CacheBrowser::AllCache_Click() {
    m_parts.ShowCookiesOnly = false;
    RefreshIE_Click();
}

void CacheBrowser::ShowCook_Click() {
    m_parts.ShowCookiesOnly = true;
    RefreshIE_Click();
}

void CacheBrowser::RefreshIE_Click() {
    m_parts.IECacheLBL.SetCaption(cache_texts::kLoading);
    m_parts.messages.DoEvents();
    m_parts.listing.LoadCacheEntries(false, false, m_parts.ShowCookiesOnly);
}

void CacheBrowser::ClearIENow_Click() {
    const bool cookiesOnly = m_parts.ShowCookiesOnly;
    const int answer =
        cookiesOnly ? m_parts.boxes.Show(cache_texts::kAskCookies, cache_texts::kConfirmCookies, kQuestion)
                    : m_parts.boxes.Show(cache_texts::kAskCache, cache_texts::kConfirmCache, kQuestion);
    if (answer != box_answer::kYes) {
        return;
    }
    m_parts.IECacheLBL.SetCaption(cache_texts::kClearing);
    // Kept: without the cookies view this clears files and unsaved cookies together.
    m_parts.listing.LoadCacheEntries(!cookiesOnly, true, cookiesOnly);
}

void CacheBrowser::kg_CLST_Click() {
    m_parts.CacheDetail.SetCaption(m_parts.cache.CacheEntryDetails(SelectedAddress()));
}

void CacheBrowser::kg_CLST_DblClick() {
    const std::int32_t row = m_parts.selection.SelectedRow();
    if (row < 0) {
        return;
    }
    const std::string address = SelectedAddress();
    const std::wstring text = m_parts.entries.Row(row);
    const int answer =
        m_parts.boxes.Show(cache_texts::kAskEntry + text.substr(0, kAskedAddress) + cache_texts::kCutMark,
                           cache_texts::kConfirmCache, kQuestion);
    if (answer != box_answer::kYes) {
        return;
    }
    const std::uint32_t error = m_parts.cache.DeleteUrlCacheEntryA(address);
    if (error != 0) {
        m_parts.boxes.Show(Decimal(error) + L" " + m_parts.cache.SystemMessage(error),
                           cache_texts::kApplication, box_style::kOK);
        return;
    }
    RemoveRow(row, address);
}

/// While the question was open a wash may have filled the list anew: the row is where its address is now.
void CacheBrowser::RemoveRow(std::int32_t row, const std::string& address) {
    const std::int32_t count = m_parts.entries.Count();
    if (row >= count || m_parts.entries.Address(row) != address) {
        row = 0;
        while (row < count && m_parts.entries.Address(row) != address) {
            ++row;
        }
    }
    if (row < count) {
        m_parts.entries.Remove(row);
    }
}

void CacheBrowser::fndTXT_Change() {
    if (m_parts.fndTXT.Text().empty()) {
        m_parts.fndCache.SetCaption(cache_texts::kFind);
        m_parts.fndCacheTip.SetToolTip(cache_texts::kFindTipForEmptyText);
    }
}

void CacheBrowser::fndCache_Click() {
    const std::wstring text = m_parts.fndTXT.Text();
    bool found = false;
    if (text != m_lastFind) {
        m_findPos = 0;
        found = FindFrom(0, text);
    } else if (m_findPos != 0) {
        // Kept: without a further match the position stays, and no message says so.
        found = FindFrom(m_findPos, text);
    }
    m_lastFind = text;
    if (!found && m_findPos == 0) {
        m_parts.boxes.Show(cache_texts::kNoMatchesBegin + text + cache_texts::kNoMatchesEnd,
                           cache_texts::kApplication, box_style::kInformation);
        m_parts.fndCache.SetCaption(cache_texts::kFindAfterNothing);
        m_parts.fndCacheTip.SetToolTip(cache_texts::kFindTipAfterNothing);
        return;
    }
    if (m_findPos < m_parts.entries.Count()) {
        m_parts.fndCacheTip.SetToolTip(cache_texts::kFindAgainTipBegin + text +
                                       cache_texts::kFindAgainTipEnd);
    } else {
        m_parts.boxes.Show(cache_texts::kNoMoreMatchesBegin + text + cache_texts::kNoMoreMatchesEnd,
                           cache_texts::kApplication, box_style::kInformation);
    }
    m_parts.fndCache.SetCaption(cache_texts::kFindAgain);
}

std::string CacheBrowser::SelectedAddress() const {
    const std::int32_t row = m_parts.selection.SelectedRow();
    return row < 0 ? std::string() : m_parts.entries.Address(row);
}

bool CacheBrowser::FindFrom(std::int32_t row, const std::wstring& text) {
    for (const std::int32_t count = m_parts.entries.Count(); row < count; ++row) {
        if (Contains(m_parts.entries.Row(row), text)) {
            m_parts.selection.SelectRow(row);
            m_findPos = row + 1;
            kg_CLST_Click();
            return true;
        }
    }
    return false;
}

}  // namespace kestrelguard
