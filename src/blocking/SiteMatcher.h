#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "blocking/CountedTexts.h"
#include "blocking/GramIndex.h"
#include "blocking/SiteAutomaton.h"
#include "blocking/SiteText.h"

namespace kestrelguard {

/// Answers whether any of many texts occurs in a lower-cased address, in a time that hardly depends on how
/// many there are: see GramIndex. When the texts are such that it gives up, an automaton decides; that is
/// built when first needed and dropped at the next change. A very few texts are looked for one by one.
///
/// Add and Remove take constant time in the number of texts, averaged over many.
class SiteMatcher {
 public:
    /// Names a text while it is held. Equal texts share a name.
    using Row = CountedTexts::Row;

    SiteMatcher() : m_index(m_texts) {}
    SiteMatcher(const SiteMatcher&) = delete;
    SiteMatcher& operator=(const SiteMatcher&) = delete;

    Row Add(std::wstring_view text);
    /// Takes back one addition.
    void Remove(Row row) noexcept;
    void Clear() noexcept;
    std::wstring Text(Row row) const;

    /// Whether any text that is held occurs, unit by unit, in the lower-cased address. An empty text occurs
    /// in every address.
    bool AnyOccursIn(std::wstring_view address) const;

    /// What is allocated at present, apart from buffers of one address.
    std::size_t MemoryBytes() const noexcept;

 private:
    /// The name of the empty text, of which only the number is held.
    static constexpr Row kEmptyText = ~Row{0};
    /// Up to here looking for them one by one is the faster way, as measured.
    static constexpr std::size_t kVeryFew = 1;

    bool OneByOne(std::string_view address) const;
    bool ByAutomaton(std::string_view address) const;

    CountedTexts m_texts;
    GramIndex m_index;
    std::size_t m_emptyTexts = 0;
    std::string m_bytes;  // of the text that is being added
    mutable std::optional<SiteAutomaton> m_automaton;
    mutable site_text::LowerCased m_lowerCased;
};

}  // namespace kestrelguard
