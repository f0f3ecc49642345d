#include "blocking/matcher/SiteMatcher.h"

#include <utility>
#include <vector>

namespace kestrelguard {

SiteMatcher::Row SiteMatcher::Add(std::wstring_view text) {
    if (text.empty()) {
        ++m_emptyTexts;
        return kEmptyText;
    }
    m_bytes.clear();
    site_text::Append(m_bytes, text);
    const Row row = m_texts.Add(m_bytes);
    try {
        m_index.Add(row);
    } catch (...) {
        m_texts.Remove(row);
        throw;
    }
    m_automaton.reset();
    return row;
}

void SiteMatcher::Remove(Row row) noexcept {
    if (row == kEmptyText) {
        --m_emptyTexts;
        return;
    }
    m_index.Remove(row);
    m_texts.Remove(row);
    m_automaton.reset();
}

void SiteMatcher::Clear() noexcept {
    m_index.Clear();
    m_texts.Clear();
    m_automaton.reset();
    m_emptyTexts = 0;
}

std::wstring SiteMatcher::Text(Row row) const {
    return row == kEmptyText ? std::wstring() : site_text::TextOf(m_texts[row]);
}

void SiteMatcher::AppendText(Row row, std::wstring& to) const {
    if (row != kEmptyText) {
        site_text::AppendTextOf(m_texts[row], to);
    }
}

bool SiteMatcher::AnyOccursIn(std::wstring_view address) const {
    if (m_emptyTexts > 0 || m_texts.Count() == 0) {
        return m_emptyTexts > 0;
    }
    const std::string_view bytes = m_lowerCased(address);
    const GramIndex::Verdict verdict = m_index.AnyOccursIn(bytes);
    return verdict == GramIndex::Verdict::kTooMuchWork ? ByAutomaton(bytes)
                                                       : verdict == GramIndex::Verdict::kSome;
}

bool SiteMatcher::ByAutomaton(std::string_view address) const {
    if (!m_automaton) {
        std::vector<std::string_view> texts;
        texts.reserve(m_texts.Count());
        for (Row row = 0; row < m_texts.Slots(); ++row) {
            if (m_texts.Holds(row)) {
                texts.push_back(m_texts[row]);
            }
        }
        m_automaton.emplace(std::move(texts));
    }
    return m_automaton->AnyOccursIn(address);
}

std::size_t SiteMatcher::MemoryBytes() const noexcept {
    return m_texts.MemoryBytes() + m_index.MemoryBytes() + (m_automaton ? m_automaton->MemoryBytes() : 0);
}

}  // namespace kestrelguard
