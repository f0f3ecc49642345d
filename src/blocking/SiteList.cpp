#include "blocking/SiteList.h"

#include <cstddef>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

std::wstring SiteList::Row(std::int32_t row) const {
    return Has(row) ? m_matcher.Text(m_rows[static_cast<std::size_t>(row)]) : std::wstring();
}

void SiteList::Append(const std::wstring& text) {
    if (m_rows.size() == m_rows.capacity()) {
        m_rows.reserve(2 * m_rows.size() + 16);  // so that the last step below cannot fail
    }
    const SiteMatcher::Row row = m_matcher.Add(text);
    try {
        m_display.Append(text);
    } catch (...) {
        m_matcher.Remove(row);
        throw;
    }
    m_rows.push_back(row);
}

void SiteList::Remove(std::int32_t row) {
    if (!Has(row)) {
        throw RunTimeError(RunTimeError::kInvalidCall);
    }
    m_display.Remove(row);
    const auto at = m_rows.begin() + row;
    m_matcher.Remove(*at);
    m_rows.erase(at);
}

void SiteList::Clear() {
    m_display.Clear();
    m_matcher.Clear();
    m_rows.clear();
}

}  // namespace kestrelguard
