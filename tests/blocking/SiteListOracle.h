#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "blocking/SiteList.h"
#include "runtime/Text.h"

namespace kestrelguard {

/// A display that shows nothing.
class NoRowsShown : public ListDisplay {
 public:
    void ShowRowsOf(const ListRows*) noexcept override {}
    void RowsAppended() noexcept override {}
    void RowRemoved(std::int32_t) noexcept override {}
};

/// A SiteList beside the plain definition of what it answers: the rows in order, each looked for in the
/// lower-cased address.
class SiteListOracle {
 public:
    void Append(const std::wstring& text) {
        m_list.Append(text);
        m_rows.push_back(text);
    }
    /// Removes a row; nothing happens when there is none. Any number chooses one.
    void Remove(std::size_t number) {
        if (!m_rows.empty()) {
            const auto row = static_cast<std::ptrdiff_t>(number % m_rows.size());
            m_list.Remove(static_cast<std::int32_t>(row));
            m_rows.erase(m_rows.begin() + row);
        }
    }
    void Clear() {
        m_list.Clear();
        m_rows.clear();
    }

    bool PlainVerdict(std::wstring_view address) const {
        const std::wstring lower = LowerCase(address);
        return std::any_of(m_rows.begin(), m_rows.end(),
                           [&](const std::wstring& row) { return Contains(lower, row); });
    }
    bool AgreesOn(std::wstring_view address) const {
        return m_list.AnyOccursIn(address) == PlainVerdict(address);
    }
    bool AgreesOnRows() const {
        if (m_list.Count() != static_cast<std::int32_t>(m_rows.size())) {
            return false;
        }
        for (std::size_t row = 0; row < m_rows.size(); ++row) {
            if (m_list.Row(static_cast<std::int32_t>(row)) != m_rows[row]) {
                return false;
            }
        }
        return true;
    }

    const std::vector<std::wstring>& Rows() const { return m_rows; }

 private:
    NoRowsShown m_display;
    SiteList m_list{m_display};
    std::vector<std::wstring> m_rows;
};

}  // namespace kestrelguard
