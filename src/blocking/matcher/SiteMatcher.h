#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "blocking/matcher/GramIndex.h"
#include "blocking/matcher/SiteAutomaton.h"
#include "blocking/matcher/SiteText.h"
#include "blocking/matcher/TextStore.h"

namespace kestrelguard {

/// Answers whether any of many texts occurs in a lower-cased address, in a time that hardly depends on how
/// many there are: see GramIndex. When the texts are such that it gives up, an automaton decides; that is
/// built when first needed and dropped at the next change. docs/matcher.md tells why it is made as it is.
///
/// Add takes constant time in the number of texts, averaged over many; Remove walks past those that share a
/// chain with the removed one, few unless they are equal.
class SiteMatcher {
 public:
    /// Names one addition until it is taken back.
    using Row = TextStore::Row;

    SiteMatcher() : m_index(m_texts) {}
    SiteMatcher(const SiteMatcher&) = delete;
    SiteMatcher& operator=(const SiteMatcher&) = delete;

    Row Add(std::wstring_view text);
    void Remove(Row row) noexcept;
    void Clear() noexcept;
    std::wstring Text(Row row) const;
    /// The same behind what is there.
    void AppendText(Row row, std::wstring& to) const;

    /// Whether any text that is held occurs, unit by unit, in the lower-cased address. An empty text occurs
    /// in every address.
    bool AnyOccursIn(std::wstring_view address) const;

    /// What is allocated at present, apart from buffers of one address.
    std::size_t MemoryBytes() const noexcept;

 private:
    /// The name of the empty text, of which only the number is held.
    static constexpr Row kEmptyText = ~Row{0};

    bool ByAutomaton(std::string_view address) const;

    TextStore m_texts;
    GramIndex m_index;
    std::size_t m_emptyTexts = 0;
    std::string m_bytes;  // of the text that is being added
    mutable std::optional<SiteAutomaton> m_automaton;
    mutable site_text::LowerCased m_lowerCased;
};

}  // namespace kestrelguard
