#include "blocking/SiteList.h"

#include <cstddef>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

std::wstring SiteList::Row(std::int32_t row) const {
    return Has(row) ? m_matcher.Text(m_rows[static_cast<std::size_t>(row)]) : std::wstring();
}

void SiteList::AppendRow(std::int32_t row, std::wstring& to) const {
    if (Has(row)) {
        m_matcher.AppendText(m_rows[static_cast<std::size_t>(row)], to);
    }
}

void SiteList::Append(const std::wstring& text) {
    if (m_rows.size() == m_rows.capacity()) {
        m_rows.reserve(2 * m_rows.size() + 16);  // so that the matcher's row is never left without ours
    }
    m_rows.push_back(m_matcher.Add(text));
    if (m_fills == 0) {
        m_display.RowsAppended();
    }
}

void SiteList::Remove(std::int32_t row) {
    if (!Has(row)) {
        throw RunTimeError(RunTimeError::kInvalidCall);
    }
    const auto at = m_rows.begin() + row;
    m_matcher.Remove(*at);
    m_rows.erase(at);
    m_display.RowRemoved(row);
}

void SiteList::Clear() {
    m_matcher.Clear();
    m_rows.clear();
    m_display.ShowRowsOf(this);
}

void SiteList::EndFill() {
    if (--m_fills == 0) {
        m_display.RowsAppended();
    }
}

}  // namespace kestrelguard
