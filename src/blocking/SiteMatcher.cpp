#include "blocking/SiteMatcher.h"

#include <algorithm>

#include "runtime/Text.h"

namespace kestrelguard {

SiteMatcher::Row SiteMatcher::Add(std::wstring_view text) {
    m_texts.push_back(Entry{std::wstring(text), true});
    return static_cast<Row>(m_texts.size() - 1);
}

void SiteMatcher::Remove(Row row) {
    m_texts[row] = Entry{};
}

void SiteMatcher::Clear() noexcept {
    m_texts.clear();
}

bool SiteMatcher::AnyOccursIn(std::wstring_view address) const {
    const std::wstring lower = LowerCase(address);
    return std::any_of(m_texts.begin(), m_texts.end(),
                       [&](const Entry& entry) { return entry.live && Contains(lower, entry.text); });
}

}  // namespace kestrelguard
