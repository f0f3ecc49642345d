#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "blocking/matcher/SiteMatcher.h"
#include "controls/Lists.h"

namespace kestrelguard {

/// The rows of `siteLST`. They are held here, where a matcher is kept in step, and the list window only shows
/// what it can of them: neither a navigation nor a write of the settings ever reads them from the window, and
/// no row is lost for want of room in it.
class SiteList final : public ListRows {
 public:
    /// `display` shows the rows; it outlives this list.
    explicit SiteList(ListDisplay& display) : m_display(display) { m_display.ShowRowsOf(this); }
    ~SiteList() override { m_display.ShowRowsOf(nullptr); }
    SiteList(const SiteList&) = delete;
    SiteList& operator=(const SiteList&) = delete;

    std::int32_t Count() const override { return static_cast<std::int32_t>(m_rows.size()); }
    std::wstring Row(std::int32_t row) const override;
    void AppendRow(std::int32_t row, std::wstring& to) const override;
    void Append(const std::wstring& text) override;
    void Remove(std::int32_t row) override;
    void Clear() override;
    void BeginFill() override { ++m_fills; }
    void EndFill() override;

    /// Whether the text of any row occurs, character by character, in the lower-cased address.
    bool AnyOccursIn(std::wstring_view address) const { return m_matcher.AnyOccursIn(address); }

 private:
    bool Has(std::int32_t row) const { return row >= 0 && row < Count(); }

    ListDisplay& m_display;
    SiteMatcher m_matcher;
    std::vector<SiteMatcher::Row> m_rows;
    int m_fills = 0;
};

}  // namespace kestrelguard
