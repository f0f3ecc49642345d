#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "blocking/SiteMatcher.h"
#include "controls/Lists.h"

namespace kestrelguard {

/// The rows of `siteLST`. The list window only shows them; they are held here beside it, and a matcher is
/// kept in step, so that neither a navigation nor a write of the settings ever reads them from the window.
class SiteList final : public ListRows {
 public:
    /// `display` shows the rows; it is empty now, outlives this list, and nobody else changes its rows.
    explicit SiteList(ListRows& display) : m_display(display) {}

    std::int32_t Count() const override { return static_cast<std::int32_t>(m_rows.size()); }
    std::wstring Row(std::int32_t row) const override;
    /// When the display refuses the row there is none here either.
    void Append(const std::wstring& text) override;
    void Remove(std::int32_t row) override;
    void Clear() override;
    void BeginFill() override { m_display.BeginFill(); }
    void EndFill() override { m_display.EndFill(); }

    /// Whether the text of any row occurs, character by character, in the lower-cased address.
    bool AnyOccursIn(std::wstring_view address) const { return m_matcher.AnyOccursIn(address); }

 private:
    bool Has(std::int32_t row) const { return row >= 0 && row < Count(); }

    ListRows& m_display;
    SiteMatcher m_matcher;
    std::vector<SiteMatcher::Row> m_rows;
};

}  // namespace kestrelguard
